#include <gtest/gtest.h>

#include <cstring>

#include "xml/Attributes.h"

namespace {

TEST(Attributes, NamesAreUniqueAndOrderedBytewise)
{
    attributes attrs;
    attrs.set("b", "1");
    attrs.set("a", "2");
    attrs.set("b", "3");
    attrs.set("B", "4"); // upper case sorts first
    attrs.set("ab", "5");
    ASSERT_EQ(attrs.size(), 4u);
    const char* expected[] = {"B", "a", "ab", "b"};
    char name[8];
    for (uint32_t i = 0; i < 4; ++i) {
        EXPECT_EQ(attrs.getName(i, name, sizeof name), std::strlen(expected[i]));
        EXPECT_STREQ(name, expected[i]);
    }
    EXPECT_EQ(attrs.getValue("b"), "3");
}

TEST(Attributes, AbsentAndEmptyDifferOnlyInHas)
{
    attributes attrs;
    attrs.set("empty", "");
    EXPECT_EQ(attrs.getValue("empty"), "");
    EXPECT_EQ(attrs.getValue("absent"), "");
    EXPECT_EQ(attrs.has("empty"), 1);
    EXPECT_EQ(attrs.has("absent"), 0);
}

TEST(Attributes, BufferFormsZeroFillAndTruncate)
{
    attributes attrs;
    attrs.set("k", "0123456789");
    attrs.set("short", "ab");

    struct Case {
        const char* label;
        uint32_t (*read)(const attributes&, char*, uint32_t);
        uint32_t size;
        const char* text;
        uint32_t result;
    };
    const Case cases[] = {
        {"value by name, truncated", [](const attributes& a, char* b, uint32_t n) { return a.getValue("k", b, n); }, 4,
         "012", 3},
        {"value by name, fits", [](const attributes& a, char* b, uint32_t n) { return a.getValue("short", b, n); }, 8,
         "ab", 2},
        {"value by name, absent", [](const attributes& a, char* b, uint32_t n) { return a.getValue("x", b, n); }, 8, "",
         0},
        {"value by index", [](const attributes& a, char* b, uint32_t n) { return a.getValue(0u, b, n); }, 6, "01234", 5},
        {"value index out of range", [](const attributes& a, char* b, uint32_t n) { return a.getValue(2u, b, n); }, 8,
         "", 0},
        {"name by index", [](const attributes& a, char* b, uint32_t n) { return a.getName(1u, b, n); }, 3, "sh", 2},
        {"name index out of range", [](const attributes& a, char* b, uint32_t n) { return a.getName(7u, b, n); }, 8, "",
         0},
        {"one-byte buffer", [](const attributes& a, char* b, uint32_t n) { return a.getName(0u, b, n); }, 1, "", 0},
    };
    for (const Case& c : cases) {
        char buffer[16];
        std::memset(buffer, 'Z', sizeof buffer);
        EXPECT_EQ(c.read(attrs, buffer, c.size), c.result) << c.label;
        EXPECT_STREQ(buffer, c.text) << c.label;
        for (uint32_t i = c.result; i < c.size; ++i) {
            EXPECT_EQ(buffer[i], '\0') << c.label << " byte " << i;
        }
        EXPECT_EQ(buffer[c.size], 'Z') << c.label << ": wrote past the buffer";
    }
}

} // namespace
