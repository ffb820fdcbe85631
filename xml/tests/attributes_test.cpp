// The attribute list: unique names in bytewise order, and the buffer forms of
// its readers, which truncate, fill with zeros and never write past the size.
#include <gtest/gtest.h>

#include <cstring>

#include "xml/Attributes.h"

namespace {

TEST(Attributes, BufferFormsTruncateZeroFillAndStayInside)
{
    attributes attrs;
    attrs.set("short", "ab");
    attrs.set("k", "0123456789");
    attrs.set("short", "ab");  // replaced, not added
    attrs.set("empty", "");
    EXPECT_EQ(attrs.has("empty"), 1);
    EXPECT_EQ(attrs.has("absent"), 0);
    using Read = uint32_t (*)(const attributes&, char*, uint32_t);
    const struct {
        Read read;
        uint32_t size;
        const char* text;
        uint32_t result;
    } cases[] = {
        {[](const attributes& a, char* b, uint32_t n) { return a.getValue("k", b, n); }, 4, "012", 3},
        {[](const attributes& a, char* b, uint32_t n) { return a.getValue("x", b, n); }, 8, "", 0},
        {[](const attributes& a, char* b, uint32_t n) { return a.getValue(1u, b, n); }, 6, "01234", 5},
        {[](const attributes& a, char* b, uint32_t n) { return a.getValue(3u, b, n); }, 8, "", 0},
        {[](const attributes& a, char* b, uint32_t n) { return a.getName(2u, b, n); }, 4, "sho", 3},
        {[](const attributes& a, char* b, uint32_t n) { return a.getName(0u, b, n); }, 1, "", 0},
    };
    for (size_t row = 0; row < sizeof cases / sizeof cases[0]; ++row) {
        const auto& c = cases[row];
        char buffer[16];
        std::memset(buffer, 'Z', sizeof buffer);
        EXPECT_EQ(c.read(attrs, buffer, c.size), c.result) << "row " << row;
        EXPECT_STREQ(buffer, c.text) << "row " << row;
        for (uint32_t i = c.result; i < c.size; ++i) {
            EXPECT_EQ(buffer[i], '\0') << "row " << row << " byte " << i;
        }
        EXPECT_EQ(buffer[c.size], 'Z') << "row " << row << ": wrote past the buffer";
    }
}

}  // namespace
