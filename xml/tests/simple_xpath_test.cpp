#include <gtest/gtest.h>

#include <string>

#include "xml/PathCompiler.h"
#include "xml/SimpleXPath.h"

namespace {

const char* const kDocument = "<?xml version=\"1.0\"?>"
                              "<response><MapElem>"
                              "<child name=\"a\"><StringElem>x</StringElem></child>"
                              "<child name=\"b\"><StringElem>y</StringElem></child>"
                              "</MapElem></response>";

struct PathCase {
    const char* path;
    const char* expected;
};

TEST(SimpleXPath, PathsAgainstOneDocument)
{
    const PathCase cases[] = {
        {"/response/MapElem/child[@name='b']/StringElem", "y"},
        {"/response/MapElem/child[@ name='b']/StringElem", "y"},
        {"/response/MapElem/child[@name ='b']/StringElem", "y"},
        {"/response/MapElem/ child[@name='b'] /StringElem", "y"},
        {"/response/MapElem/child [@name='b']/StringElem", "y"},
        {"/response/MapElem/child/StringElem", "x"},
        {"/response/MapElem/child[1]/StringElem", "x"},
        {"/response/MapElem/child[2]/StringElem", "y"},
        {"/response/MapElem/child[ 2abc ]/StringElem", "y"},
        {"/response/MapElem/child[3]/StringElem", ""},
        {"/response/MapElem/child[10]/StringElem", ""},
        {"/response/MapElem/child[0]/StringElem", ""},
        {"/response/MapElem/child[-1]/StringElem", ""},
        {"/response/MapElem/child[last()]/StringElem", ""},
        {"/response/MapElem/child[@name=\"b\"]/StringElem", "x"},
        {"/response/MapElem/child[@name='b/StringElem", "x"},
        {"/response/MapElem/child[@name='c']/StringElem", ""},
        {"/response/MapElem/child[@name=' b']/StringElem", ""},
        {"/response/MapElem/child[@other='']/StringElem", "x"},
        {"/response/MapElem", ""},
        {"response/MapElem", ""},
        {"//response//MapElem/child[2]/StringElem/", "y"},
        {"/response/MapElem/child/stringelem", ""},
        {"/MapElem/child/StringElem", ""},
        {"/response/MapElem/child/StringElem/Deeper", ""},
        {"", ""},
        {"/", ""},
    };
    simpleXPath xpath(kDocument);
    for (const PathCase& c : cases) {
        EXPECT_EQ(xpath.evaluate(c.path), c.expected) << c.path;
    }
}

TEST(SimpleXPath, PositionsCoverOneToNineOnly)
{
    std::string document = "<r><l>";
    for (int i = 1; i <= 12; ++i) {
        document += "<s>item" + std::to_string(i) + "</s>";
    }
    document += "</l></r>";
    simpleXPath xpath(document);
    for (int i = 1; i <= 9; ++i) {
        EXPECT_EQ(xpath.evaluate("/r/l/s[" + std::to_string(i) + "]"), "item" + std::to_string(i));
    }
    EXPECT_EQ(xpath.evaluate("/r/l/s[10]"), "");
    EXPECT_EQ(xpath.evaluate("/r/l/s[01]"), "item1");
}

TEST(SimpleXPath, PositionsCountConsecutiveSameNamedElements)
{
    simpleXPath xpath("<r><s>1</s><s>2</s><t>t</t><s>3</s>text<s>4</s><s>5<s>in</s></s></r>");
    EXPECT_EQ(xpath.evaluate("/r/s[1]"), "1");
    EXPECT_EQ(xpath.evaluate("/r/s[2]"), "2");
    // <t> restarted the count at 3; the text before 4 did not: 3, 4, 5 are 1, 2, 3.
    EXPECT_EQ(xpath.evaluate("/r/s[3]"), "5");
    // The inner <s> opened right after <s>4</s> closed, so it counts on from it.
    EXPECT_EQ(xpath.evaluate("/r/s[3]/s[3]"), "in");
    EXPECT_EQ(xpath.evaluate("/r/s[3]/s[1]"), "");
    EXPECT_EQ(xpath.evaluate("/r/t[1]"), "t");
}

TEST(SimpleXPath, ResultIsOwnTextOnly)
{
    simpleXPath xpath("<r><a>  one <b>inner</b>two &amp; <c/>three</a></r>");
    EXPECT_EQ(xpath.evaluate("/r/a"), "one two & three");
    EXPECT_EQ(xpath.evaluate("/r/a/b"), "inner");
}

TEST(SimpleXPath, ParseErrorBeforeMatchGivesEmpty)
{
    simpleXPath xpath("<r><a>1</a><b></c></r>");
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(xpath.evaluate("/r/b"), "");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Parsing error at character 17, '>'\n");
    // A match before the error stops the parse, so no message is printed.
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(xpath.evaluate("/r/a"), "1");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST(PathCompiler, StepsAndPredicates)
{
    struct StepCase {
        const char* path;
        size_t steps;
        const char* lastName;
        const char* predicateName;
        const char* predicateValue;
        int index;
    };
    const StepCase cases[] = {
        {"/a/b", 2, "b", "", "", 0},
        {"junk/a", 1, "a", "", "", 0},
        {"/a[ 7 ]", 1, "a", "<INDEX>", "", 7},
        {"/a[@ k = ' v ']", 1, "a", "k", " v ", 0},
        {"/a[@k='v'][2]", 1, "a", "k", "v", 0},
        {"/a[@k='v'", 1, "a", "", "", 0},
        {"/a[@k]", 1, "a", "", "", 0},
        {"/a[x]", 1, "a", "<UNDEFINED>", "", 0},
        {"/a[99999999999999999999]", 1, "a", "<UNDEFINED>", "", 0},
        {"/a[@k='x/y']", 2, "y']", "", "", 0},
        {"/ / /", 0, "", "", "", 0},
    };
    for (const StepCase& c : cases) {
        const std::vector<PathNode> steps = compilePath(c.path);
        ASSERT_EQ(steps.size(), c.steps) << c.path;
        if (steps.empty()) {
            continue;
        }
        const PathNode& last = steps.back();
        EXPECT_EQ(last.name, c.lastName) << c.path;
        EXPECT_EQ(last.predicateName, c.predicateName) << c.path;
        EXPECT_EQ(last.predicateValue, c.predicateValue) << c.path;
        EXPECT_EQ(last.index, c.index) << c.path;
    }
}

} // namespace
