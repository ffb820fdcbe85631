#include <gtest/gtest.h>

#include <string>

#include "xml/SimpleSAXParser.h"
#include "xml/tests/RecordingHandler.h"

namespace {

struct ParseCase {
    const char* label;
    std::string input;
    std::string events; // between startDocument and endDocument
    int result;
    std::string output; // what the parser prints
};

class ParserEvents : public ::testing::TestWithParam<ParseCase> {};

TEST_P(ParserEvents, ReportsEventsResultAndMessage)
{
    const ParseCase& c = GetParam();
    RecordingHandler handler;
    SimpleSAXParser parser(&handler);
    ::testing::internal::CaptureStdout();
    const int result = parser.parse(c.input);
    const std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(result, c.result);
    EXPECT_EQ(handler.log, "startDocument\n" + c.events + "endDocument\n");
    EXPECT_EQ(printed, c.output);
    EXPECT_FALSE(handler.m_Stop);
}

const ParseCase kCases[] = {
    {"EmptyElement", "<a/>", "start a\nend a\n", 0, ""},
    {"Attributes", "<a b = \"1\" c=\"x&amp;y\"></a>", "start a b=[1] c=[x&y]\nend a\n", 0, ""},
    {"AttributesWithoutBlank", "<a b=\"1\"c=\"2\"/>", "start a b=[1] c=[2]\nend a\n", 0, ""},
    {"RepeatedAttributeReplaces", "<a b=\"1\" b=\"2\"/>", "start a b=[2]\nend a\n", 0, ""},
    {"SingleQuotedValue", "<a b='1'>", "", -1, "Parsing error at character 5, '''\n"},
    {"AttributeWithoutEquals", "<a b \"1\">", "", -1, "Parsing error at character 5, '\"'\n"},
    {"ReservedName", "<xmlData/>", "", -1, "Parsing error at character 1, 'x'\n"},
    {"ReservedNameAnyCase", "<r><XmL/></r>", "start r\n", -1, "Parsing error at character 4, 'X'\n"},
    {"ReservedNameAtEndOfText", "<r><xMl", "start r\n", -1, "Parsing error at character 4, 'x'\n"},
    {"ReservedEndTagName", "<r></XML>", "start r\n", -1, "Parsing error at character 5, 'X'\n"},
    {"XmlAttributeNameAccepted", "<a xmlns=\"u\"/>", "start a xmlns=[u]\nend a\n", 0, ""},
    {"MismatchedEndTag", "<a></b>", "start a\n", -1, "Parsing error at character 6, '>'\n"},
    {"EndTagNameIsCaseSensitive", "<a></A>", "start a\n", -1, "Parsing error at character 6, '>'\n"},
    {"EndTagWithBlankBeforeGt", "<a></a  >", "start a\nend a\n", 0, ""},
    {"EndTagMissingGt", "<a></a x>", "start a\n", -1, "Parsing error at character 7, 'x'\n"},
    {"EndTagWithNothingOpen", "<a/></a>", "start a\nend a\n", -1, "Parsing error at character 4, '<'\n"},
    {"TextWithEntities", "<a>  x &lt;y&gt;  </a>", "start a\ntext [x <y>  ] 13\nend a\n", 0, ""},
    {"UnknownReferenceSkipsOneByte", "<a>&x;&amp;</a>", "start a\ntext [&amp;] 8\nend a\n", 0, ""},
    {"UnknownReferenceRemoved", "<a>a & b; c</a>", "start a\ntext [a  c] 8\nend a\n", 0, ""},
    {"NumericReferenceRemoved", "<a>&#65;B</a>", "start a\ntext [B] 6\nend a\n", 0, ""},
    {"AmpersandWithoutSemicolon", "<a>x & y</a>", "start a\ntext [x & y] 5\nend a\n", 0, ""},
    {"WhitespaceRunGivesNoEvent", "<a> \t\r\n<b/> </a>", "start a\nstart b\nend b\nend a\n", 0, ""},
    {"TextAroundChild", "<a>x<b>y</b>z</a>", "start a\ntext [x] 1\nstart b\ntext [y] 1\nend b\ntext [z] 1\nend a\n",
     0, ""},
    {"StrayTextAndDeclarationBeforeRoot", "junk<?xml version=\"1.0\"?><r/>", "start r\nend r\n", 0, ""},
    {"TextAfterRoot", "<r/>junk", "start r\nend r\n", -1, "dunno what to do?!\nParsing error at character 4, 'j'\n"},
    {"WhitespaceAfterRoot", "<r/> \n", "start r\nend r\n", 0, ""},
    {"SeveralTopLevelElements", "<a/><b/>", "start a\nend a\nstart b\nend b\n", 0, ""},
    {"CommentGivesNoEvent", "<r><!-- <x/> --></r>", "start r\nend r\n", 0, ""},
    {"ShortestComment", "<r><!--></r>", "start r\nend r\n", 0, ""},
    {"UnterminatedDoctype", "<r><!DOCTYPE r></r>", "start r\n", -1, "<<end of string>>\n"},
    {"ShortestInstruction", "<r><?></r>", "start r\nend r\n", 0, ""},
    {"UnterminatedInstruction", "<r><?pi </r>", "start r\n", -1, "<<end of string>>\n"},
    {"UnterminatedInstructionInProlog", "<?xml version=\"1.0\"", "", -1, ""},
    {"UnterminatedCommentInProlog", "<!-- x", "", -1, ""},
    {"OpenElementsAtEnd", "<r><a>", "start r\nstart a\n", 0, ""},
    {"EmptyText", "", "", 0, ""},
    {"NoElement", "just text", "", 0, ""},
    {"LoneLessThanInsideElement", "<a>1 < 2</a>", "start a\ntext [1 ] 2\ntext [2] 1\nend a\n", 0, ""},
    {"HighBytesPassUnchanged", "<a b=\"\xc3\xa9\">\xe2\x82\xac</a>", "start a b=[\xc3\xa9]\ntext [\xe2\x82\xac] 3\nend a\n",
     0, ""},
    {"TextEndsAtFirstNul", std::string("<a>x\0</a>", 9), "start a\ntext [x] 1\n", 0, ""},
    // Cut-off tags: the tag counts as ended and is reported.
    {"CutInsideStartTag", "<r><a b=\"1\"  ", "start r\nstart a b=[1]\n", 0, ""},
    {"CutInsideAttributeValue", "<r><a b=\"xy", "start r\nstart a b=[xy]\n", 0, ""},
    {"CutAfterEquals", "<r><a b=", "start r\n", -1, "<<end of string>>\n"},
    {"CutInsideEndTag", "<r></r", "start r\n", -1, "<<end of string>>\n"},
    {"CutAfterLessThan", "<r><", "start r\n", 0, ""},
};

INSTANTIATE_TEST_SUITE_P(Table, ParserEvents, ::testing::ValuesIn(kCases),
                         [](const ::testing::TestParamInfo<ParseCase>& info) { return info.param.label; });

TEST(SimpleSAXParser, StopInRootStartEndsWithOnlyEndDocument)
{
    RecordingHandler handler;
    handler.stopAtStart = "r";
    SimpleSAXParser parser(&handler);
    EXPECT_EQ(parser.parse("<r><a/>text</x></r>"), 0);
    EXPECT_EQ(handler.log, "startDocument\nstart r\nendDocument\n");
}

TEST(SimpleSAXParser, StopInEmptyElementStillDeliversItsEnd)
{
    RecordingHandler handler;
    handler.stopAtStart = "a";
    SimpleSAXParser parser(&handler);
    EXPECT_EQ(parser.parse("<r><a/><b/></r>"), 0);
    EXPECT_EQ(handler.log, "startDocument\nstart r\nstart a\nend a\nendDocument\n");
}

TEST(SimpleSAXParser, BaseHandlerAndNullHandlerParseAlike)
{
    const char* text = "<?xml version=\"1.0\"?><r a=\"1\"><b>t</b><c/></r>";
    SimpleSAXHandler quiet;
    SimpleSAXParser withBase(&quiet);
    EXPECT_EQ(withBase.parse(text), 0);
    EXPECT_FALSE(quiet.m_Stop);
    SimpleSAXParser withNone(nullptr);
    EXPECT_EQ(withNone.parse(text), 0);
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(withNone.parse("<r/>x"), -1);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "dunno what to do?!\nParsing error at character 4, 'x'\n");
}

TEST(SimpleSAXParser, NothingCarriesOverBetweenRuns)
{
    RecordingHandler handler;
    SimpleSAXParser parser(&handler);
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(parser.parse("<a><b>"), 0);
    EXPECT_EQ(parser.parse("</b>"), 0); // nothing open: not an element, skipped as prolog
    EXPECT_EQ(parser.parse("<c></c>"), 0);
    ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(handler.log, "startDocument\nstart a\nstart b\nendDocument\n"
                           "startDocument\nendDocument\n"
                           "startDocument\nstart c\nend c\nendDocument\n");
}

} // namespace
