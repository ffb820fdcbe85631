// The hex dump of the trace.
#include <gtest/gtest.h>

#include <string>

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

}  // namespace
