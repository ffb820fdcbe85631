#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "transport/HCUSBTransport.h"

namespace {

std::string dumpOf(const std::vector<uint8_t>& bytes)
{
    testing::internal::CaptureStderr();
    hexDump(bytes.data(), static_cast<int32_t>(bytes.size()));
    return testing::internal::GetCapturedStderr();
}

TEST(HexDumpTest, TwentyBytesMakeAFullAndAPaddedLine)
{
    std::vector<uint8_t> bytes;
    for (int i = 0; i < 20; ++i) {
        bytes.push_back(static_cast<uint8_t>('A' + i));
    }
    const std::string expected =
        "41 42 43 44 45 46 47 48 49 4A 4B 4C 4D 4E 4F 50 |ABCDEFGHIJKLMNOP\n"
        "51 52 53 54 " + std::string(36, ' ') + "|QRST\n";
    EXPECT_EQ(dumpOf(bytes), expected);
}

TEST(HexDumpTest, ShortDumpIsOneLineWithoutPadding)
{
    EXPECT_EQ(dumpOf({'h', 'e', 'l', 'l', 'o'}), "68 65 6C 6C 6F |hello\n");
}

TEST(HexDumpTest, UnprintableBytesShowAsDots)
{
    EXPECT_EQ(dumpOf({0x00, 0x1F, 0x20, 0x7E, 0x7F, 0xA5, 0xFF}), "00 1F 20 7E 7F A5 FF |.. ~...\n");
}

TEST(HexDumpTest, NothingToDumpWritesNothing)
{
    EXPECT_EQ(dumpOf({}), "");
    testing::internal::CaptureStderr();
    hexDump(nullptr, 4);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

struct Converted {
    int32_t count;
    std::vector<uint8_t> bytes;
    bool arrayHandedOver;
    std::string output;
};

Converted convert(const char* text)
{
    uint8_t marker = 0;
    uint8_t* const sentinel = &marker;  // stays when no array is handed over
    uint8_t* bytes = sentinel;
    testing::internal::CaptureStdout();
    Converted result{hexToBytes(text, &bytes), {}, false, ""};
    result.output = testing::internal::GetCapturedStdout();
    if (bytes != sentinel && bytes != nullptr) {
        result.arrayHandedOver = true;
        result.bytes.assign(bytes, bytes + result.count);
        delete[] bytes;
    }
    return result;
}

TEST(HexToBytesTest, ConvertsPairsOfDigits)
{
    struct Case {
        const char* text;
        std::vector<uint8_t> bytes;
    };
    const Case cases[] = {
        {"a5000650", {0xA5, 0x00, 0x06, 0x50}},
        {"A5000650", {0xA5, 0x00, 0x06, 0x50}},
        {"0123456", {0x01, 0x23, 0x45}},  // the unpaired last digit is dropped
        {"fF", {0xFF}},
        {"09aF", {0x09, 0xAF}},
        {"", {}},  // no array handed over, the output left untouched
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const Converted converted = convert(c.text);
        EXPECT_EQ(converted.count, static_cast<int32_t>(c.bytes.size()));
        EXPECT_EQ(converted.arrayHandedOver, !c.bytes.empty());
        EXPECT_EQ(converted.bytes, c.bytes);
        EXPECT_EQ(converted.output, "");
    }
}


TEST(HexToBytesTest, BadCharacterReportsAndGivesNoBytes)
{
    struct Case {
        const char* text;
        const char* message;
    };
    const Case cases[] = {
        {"a5g0", "not valid Hex char?! '47'\n"},  // reported upper-cased: 'G'
        {"a5 0", "not valid Hex char?! '20'\n"},
        {"0x12", "not valid Hex char?! '58'\n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        const Converted converted = convert(c.text);
        EXPECT_EQ(converted.count, 0);
        EXPECT_FALSE(converted.arrayHandedOver);
        EXPECT_EQ(converted.output, c.message);
    }
    // A bad character in the unpaired last place is still reported.
    const Converted oddBad = convert("12z");
    EXPECT_EQ(oddBad.count, 0);
    EXPECT_FALSE(oddBad.arrayHandedOver);
    EXPECT_EQ(oddBad.output, "not valid Hex char?! '5A'\n");
    // A byte above 0x7F is reported by its own code.
    const Converted highBad = convert("1\xE9");
    EXPECT_EQ(highBad.output, "not valid Hex char?! 'E9'\n");
}

}  // namespace
