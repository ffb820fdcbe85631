// The events, result and printed message of the SAX parser, one row per path
// through it. Cut-off and random input is left to the fuzz_sax_parser target.
#include <gtest/gtest.h>

#include <string>

#include "xml/SimpleSAXParser.h"
#include "xml/SimpleSAXHandler.h"

namespace {

// Writes every event as one line, for comparing event streams.
class RecordingHandler : public SimpleSAXHandler {
public:
    void startDocument() override { log += "startDocument\n"; }
    void startElement(const char* name, const attributes& attrs) override
    {
        log += "start " + std::string(name);
        char key[64];
        for (uint32_t i = 0; i < attrs.size(); ++i) {
            attrs.getName(i, key, sizeof key);
            log += " " + std::string(key) + "=[" + attrs.getValue(key) + "]";
        }
        log += "\n";
        if (stopAtStart == name) m_Stop = true;
    }
    void endElement(const char* name) override { log += "end " + std::string(name) + "\n"; }
    void characters(const char* text, int count) override
    {
        log += "text [" + std::string(text) + "] " + std::to_string(count) + "\n";
    }
    void endDocument() override { log += "endDocument\n"; }

    std::string log;
    std::string stopAtStart;
};

TEST(SimpleSAXParser, EventsResultAndMessage)
{
    const struct {
        std::string input;
        std::string events;  // between startDocument and endDocument
        int result;
        std::string output;  // what the parser prints
    } cases[] = {
        {"<a/>", "start a\nend a\n", 0, ""},
        {"<a c = \"x&amp;y\" b=\"1\"b=\"2\"></a>", "start a b=[2] c=[x&y]\nend a\n", 0, ""},
        {"<a b='1'>", "", -1, "Parsing error at character 5, '''\n"},
        {"<r><XmL/></r>", "start r\n", -1, "Parsing error at character 4, 'X'\n"},
        {"<a></A>", "start a\n", -1, "Parsing error at character 6, '>'\n"},
        {"<a></a  >", "start a\nend a\n", 0, ""},
        {"<a/></a>", "start a\nend a\n", -1, "Parsing error at character 4, '<'\n"},
        {"<a>  x &lt;y&gt; &apos;&quot;  </a>", "start a\ntext [x <y> '\"  ] 26\nend a\n", 0, ""},
        {"<a>&x;&amp;</a>", "start a\ntext [&amp;] 8\nend a\n", 0, ""},  // an unknown reference skips one byte
        {"<a>a & b; c</a>", "start a\ntext [a  c] 8\nend a\n", 0, ""},
        {"<a>x & y</a>", "start a\ntext [x & y] 5\nend a\n", 0, ""},
        {"<a> \t\r\n<b/> </a>", "start a\nstart b\nend b\nend a\n", 0, ""},
        {"<a>x<b>y</b>z</a>", "start a\ntext [x] 1\nstart b\ntext [y] 1\nend b\ntext [z] 1\nend a\n", 0, ""},
        {"junk<?xml version=\"1.0\"?><r/>", "start r\nend r\n", 0, ""},
        {"<r/>junk", "start r\nend r\n", -1, "dunno what to do?!\nParsing error at character 4, 'j'\n"},
        {"<r><!-- <x/> --><?pi?></r>", "start r\nend r\n", 0, ""},
        {"<r><!DOCTYPE r></r>", "start r\n", -1, "<<end of string>>\n"},
        {"<a>1 < 2</a>", "start a\ntext [1 ] 2\ntext [2] 1\nend a\n", 0, ""},
    };
    for (const auto& c : cases) {
        RecordingHandler handler;
        SimpleSAXParser parser(&handler);
        ::testing::internal::CaptureStdout();
        EXPECT_EQ(parser.parse(c.input), c.result) << c.input;
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), c.output) << c.input;
        EXPECT_EQ(handler.log, "startDocument\n" + c.events + "endDocument\n") << c.input;
    }
}

TEST(SimpleSAXParser, StopEndsTheParseAfterTheCurrentElement)
{
    const struct {
        const char* stopAt;
        const char* log;
    } cases[] = {{"r", "startDocument\nstart r\nendDocument\n"},
                 {"a", "startDocument\nstart r\nstart a\nend a\nendDocument\n"}};  // an empty element still ends
    for (const auto& c : cases) {
        RecordingHandler handler;
        handler.stopAtStart = c.stopAt;
        EXPECT_EQ(SimpleSAXParser(&handler).parse("<r><a/>text</x></r>"), 0);
        EXPECT_EQ(handler.log, c.log);
    }
}

}  // namespace
