#include "common/LeadingNumber.h"

#include <climits>
#include <gtest/gtest.h>

namespace {

TEST(LeadingNumberTest, ReadsLikeAtoiWithinItsBoundsWithoutOverflow)
{
    // clang-format off
    const struct {
        const char* text;
        size_t maxChars;
        int value;
        int lowByte;
    } cases[] = {
        {"  \t+7z", 9, 7, 7},
        {"\v\f\r\n-12", 9, -12, 0xF4},
        {"- 5", 9, 0, 0},                   // a sign must touch the digits
        {"123456789", 4, 1234, 0xD2},       // only the allowed characters are read
        {"12\0" "34", 9, 12, 12},           // nor past a terminator
        {"257", 3, 257, 1},                 // a byte-sized field keeps the low 8 bits
        {"4294967297", 10, INT_MAX, 1},     // clamped, while the low byte is still exact
        {"99999999999999999999", 20, INT_MAX, 0xFF},
        {"-99999999999999999999", 21, INT_MIN, 0x01},
    };
    // clang-format on
    for (const auto& c : cases) {
        const LeadingNumber read = readLeadingNumber(c.text, c.maxChars);
        EXPECT_EQ(read.value, c.value) << c.text;
        EXPECT_EQ(read.lowByte, c.lowByte) << c.text;
    }
    EXPECT_EQ(readLeadingNumber(std::string(" 42 ")).value, 42);
}

}  // namespace
