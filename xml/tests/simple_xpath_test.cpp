// The path evaluator: steps, predicates and positions, for the paths the
// program uses; odd path texts are left to the fuzz_xpath target.
#include <gtest/gtest.h>

#include <string>

#include "xml/SimpleXPath.h"

namespace {

TEST(SimpleXPath, PathsAgainstOneDocument)
{
    const struct {
        const char* path;
        const char* expected;
    } cases[] = {
        {"/response/MapElem/child[@name='b']/StringElem", "y"},
        {"/response/MapElem/child/StringElem", "x"},
        {"/response/MapElem/child[2]/StringElem", "y"},
        {"/response/MapElem/child[3]/StringElem", ""},
        {"/response/MapElem/child[0]/StringElem", ""},
        {"/response/MapElem/child[@name=\"b\"]/StringElem", "x"},  // not a predicate it knows: ignored
        {"/response/MapElem/child[@name='c']/StringElem", ""},
        {"/response/MapElem", ""},  // own text only
        {"/response/MapElem/child/stringelem", ""},
        {"/MapElem/child/StringElem", ""},
        {"", ""},
    };
    simpleXPath xpath("<?xml version=\"1.0\"?><response><MapElem><child name=\"a\"><StringElem>x</StringElem></child>"
                      "<child name=\"b\"><StringElem>y</StringElem></child></MapElem></response>");
    for (const auto& c : cases) {
        EXPECT_EQ(xpath.evaluate(c.path), c.expected) << c.path;
    }
}

TEST(SimpleXPath, PositionsCountSameNamedNeighboursUpToNine)
{
    std::string list = "<r><l>";
    for (int i = 1; i <= 10; ++i) {
        list += "<s>item" + std::to_string(i) + "</s>";
    }
    simpleXPath xpath(list + "</l></r>");
    EXPECT_EQ(xpath.evaluate("/r/l/s[1]"), "item1");
    EXPECT_EQ(xpath.evaluate("/r/l/s[9]"), "item9");
    EXPECT_EQ(xpath.evaluate("/r/l/s[10]"), "");

    simpleXPath runs("<r><s>1</s><s>2</s><t>t</t><s>3</s>text<s>4</s><s>5<s>in</s></s></r>");
    EXPECT_EQ(runs.evaluate("/r/s[2]"), "2");
    // <t> restarted the count at 3; the text before 4 did not: 3, 4, 5 are 1, 2, 3.
    EXPECT_EQ(runs.evaluate("/r/s[3]"), "5");
    // The inner <s> opened right after <s>4</s> closed, so it counts on from it.
    EXPECT_EQ(runs.evaluate("/r/s[3]/s[3]"), "in");
}

TEST(SimpleXPath, OwnTextAndParseErrors)
{
    EXPECT_EQ(simpleXPath("<r><a>  one <b>inner</b>two &amp; <c/>three</a></r>").evaluate("/r/a"), "one two & three");

    simpleXPath broken("<r><a>1</a><b></c></r>");
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(broken.evaluate("/r/b"), "");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Parsing error at character 17, '>'\n");
    // A match before the error stops the parse, so no message is printed.
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(broken.evaluate("/r/a"), "1");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

}  // namespace
