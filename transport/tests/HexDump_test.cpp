#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "transport/HexDump.h"

namespace {

TEST(HexDumpTest, SixteenBytesALinePaddedOnlyWhenWiderThanTheLine)
{
    const std::string alphabet = "ABCDEFGHIJKLMNOPQRST";
    const struct {
        std::vector<uint8_t> bytes;
        std::string expected;
    } cases[] = {
        {{alphabet.begin(), alphabet.end()},
         "41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 |ABCDEFGHIJKLMNOP\n"
         "51 52 53 54 " + std::string(36, ' ') + "|QRST\n"},
        {{'h', 'e', 'l', 'l', 'o'}, "68 65 6C 6C 6F |hello\n"},
        {{0x00, 0x1F, 0x20, 0x7E, 0x7F, 0xA5, 0xFF}, "00 1F 20 7E 7F A5 FF |.. ~...\n"},
        {{}, ""},
    };
    for (const auto& c : cases) {
        testing::internal::CaptureStderr();
        hexDump(c.bytes.data(), static_cast<int32_t>(c.bytes.size()));
        EXPECT_EQ(testing::internal::GetCapturedStderr(), c.expected);
    }
    testing::internal::CaptureStderr();
    hexDump(nullptr, 4);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(HexToBytesTest, PairsOfDigitsOrNothingOnABadCharacter)
{
    const struct {
        const char* text;
        std::vector<uint8_t> bytes;
        const char* message;
    } cases[] = {
        {"a5000650", {0xA5, 0x00, 0x06, 0x50}, ""},
        {"09aF", {0x09, 0xAF}, ""},
        {"0123456", {0x01, 0x23, 0x45}, ""},  // the unpaired last digit is dropped
        {"", {}, ""},
        {"a5g0", {}, "not valid Hex char?! '47'\n"},  // reported upper-cased: 'G'
        {"0x12", {}, "not valid Hex char?! '58'\n"},
        {"12z", {}, "not valid Hex char?! '5A'\n"},  // even in the unpaired last place
        {"1\xE9", {}, "not valid Hex char?! 'E9'\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        uint8_t marker = 0;
        uint8_t* bytes = &marker;  // stays when no array is handed over
        testing::internal::CaptureStdout();
        const int32_t count = hexToBytes(c.text, &bytes);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), c.message);
        const bool handedOver = bytes != &marker && bytes != nullptr;
        EXPECT_EQ(handedOver, !c.bytes.empty());
        EXPECT_EQ(handedOver ? std::vector<uint8_t>(bytes, bytes + count) : std::vector<uint8_t>(), c.bytes);
        EXPECT_EQ(count, static_cast<int32_t>(c.bytes.size()));
        if (handedOver)
            delete[] bytes;
    }
}

}  // namespace
