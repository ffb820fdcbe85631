// The hex dump of the trace and the hex text reader of the raw-packet mode.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "transport/HexDump.h"

namespace {

TEST(HexDumpTest, SixteenBytesALinePaddedOnlyWhenWiderThanTheLine)
{
    const struct {
        std::string bytes;
        std::string expected;
    } cases[] = {
        {"ABCDEFGHIJKLMNOPQRST", "41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 |ABCDEFGHIJKLMNOP\n"
                                 "51 52 53 54 " +
                                     std::string(36, ' ') + "|QRST\n"},
        {std::string("\x00\x1F\x20\x7E\x7F\xA5", 6), "00 1F 20 7E 7F A5 |.. ~..\n"},
        {"", ""},
    };
    for (const auto& c : cases) {
        testing::internal::CaptureStderr();
        hexDump(reinterpret_cast<const uint8_t*>(c.bytes.data()), static_cast<int32_t>(c.bytes.size()));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.expected);
    }
}

TEST(HexToBytesTest, PairsOfDigitsOrNothingOnABadCharacter)
{
    const struct {
        const char* text;
        std::vector<uint8_t> bytes;
        const char* message;
    } cases[] = {
        {"09aF5", {0x09, 0xAF}, ""},                  // the unpaired last digit is dropped
        {"a5g0", {}, "not valid Hex char?! '47'\n"},  // reported upper-cased: 'G'
        {"12z", {}, "not valid Hex char?! '5A'\n"},   // even in the unpaired last place
    };
    for (const auto& c : cases) {
        uint8_t* bytes = nullptr;
        testing::internal::CaptureStdout();
        const int32_t count = hexToBytes(c.text, &bytes);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), c.message) << c.text;
        EXPECT_EQ(bytes ? std::vector<uint8_t>(bytes, bytes + count) : std::vector<uint8_t>(), c.bytes) << c.text;
        EXPECT_EQ(count, static_cast<int32_t>(c.bytes.size())) << c.text;
        delete[] bytes;
    }
}

}  // namespace
