// The attempts, pauses and judgements of the settings and polled exchanges.
// Collecting framed answers within the time limit is played end to end (noise,
// split frames, bit 7 and cut packets) and by the run driver's raw packet.
#include <gtest/gtest.h>

#include "npa/NpaFrame.h"
#include "npa/tests/NpaTestSupport.h"

namespace {

const std::vector<uint8_t> kRequest = bytesFromHex("A5 00 06 50 E0 D8 00 28 15");

struct ChannelUnderTest {
    ScopedScriptedPrinter scripted;
    ScriptedPrinter& printer = scripted.printer;
    FakeClock& clock = scripted.fake.clock;
    NPAChannel channel{"/dev/usb/lp3"};
};

TEST(Exchanges, AttemptsWaitsAndJudgements)
{
    using Poll = int (NPAChannel::*)(const uint8_t*, int32_t);
    const std::string text = "A5 00 0D 50 E0 D8 00 28 15 00 05 " + hexOf("home");
    // clang-format off
    const struct {
        const char* name;
        Poll poll;
        std::vector<std::string> answers;  // one per attempt; missing ones are silence
        int result;
        size_t attempts;
        std::vector<unsigned> sleeps;
        const char* output;
    } cases[] = {
        // A settings request is sent once; its answer's last byte is the result.
        {"settings accepted", &NPAChannel::sendSettings, {"A5 00 04 50 E0 DA 01"}, 0, 1, {5}, ""},
        {"settings refused by the item", &NPAChannel::sendSettings, {"A5 00 04 50 E0 DA 02"}, 1, 1, {5}, ""},
        {"settings silent", &NPAChannel::sendSettings, {""}, -1, 1, {5}, ""},
        {"settings refused", &NPAChannel::sendSettings, {"A5 00 04 D4 E0 DA 01"}, -1, 1, {5}, ""},
        {"settings: short answer", &NPAChannel::sendSettings, {"A5 00 D4"}, 1, 1, {5}, ""},
        {"settings: one byte", &NPAChannel::sendSettings, {"01"}, 0, 1, {5}, ""},
        {"connected at once", &NPAChannel::pollConnection, {"A5 00 02 50 00"}, 0, 1, {2}, ""},
        {"never connected: last byte", &NPAChannel::pollConnection, {"03", "03", "03", "A5 00 02 50 07"}, 7, 4,
         {2, 2, 2, 2}, ""},
        {"connection, silence last", &NPAChannel::pollConnection, {"03"}, 1, 4, {2, 2, 2, 2}, ""},
        {"connection refused", &NPAChannel::pollConnection, {"A5 00 02 D4 00"}, -1, 1, {2}, ""},
        {"short answer is no refusal", &NPAChannel::pollConnection, {"A5 D4 00"}, 0, 1, {2}, ""},
        {"device state third", &NPAChannel::pollDeviceState, {"01", "A5 00 02 D4 01", "2D"}, 0, 3, {10, 10}, ""},
        {"reset second", &NPAChannel::pollReset, {"A5 00 02 50 00", "A5 00 02 50 01"}, 0, 2, {5, 50, 5}, ""},
        {"address", &NPAChannel::pollAddress, {"A5 00 08 50 E0 D8 00 0A 02 C0 A8 01 0A"}, 0, 1, {3},
         "192.168.1.10\n"},
        {"address after zeros and a short answer", &NPAChannel::pollAddress, {"50 00 00 00 00", "0A 01 02", "00 00 01"},
         1, 7, {3, 3, 3, 3, 3, 3, 3}, ""},
        {"text", &NPAChannel::pollText, {text + " 00 FF"}, 0, 1, {2}, "home\n"},
        {"text needs more than the header", &NPAChannel::pollText, {"A5 00 08 50 E0 D8 00 28 15 00 05"}, 1, 7,
         {2, 2, 2, 2, 2, 2, 2}, ""},
    };
    // clang-format on
    for (const auto& c : cases) {
        ChannelUnderTest t;
        for (const std::string& answer : c.answers) {
            t.printer.addAnswer(answer);
        }
        const Captured captured =
            captureOutput([&] { EXPECT_EQ((t.channel.*c.poll)(kRequest.data(), 9), c.result) << c.name; });
        EXPECT_EQ(captured.out, c.output) << c.name;
        EXPECT_EQ(t.printer.writes.size(), c.attempts) << c.name;
        EXPECT_EQ(t.clock.sleeps, c.sleeps) << c.name;
    }
}

// Only the bytes read are judged: nothing past an answer too short for a flags
// byte is looked at (an allocation of its own size shows it under AddressSanitizer).
TEST(Exchanges, ARefusalIsJudgedWithinTheBytesRead)
{
    const auto shortAnswer = std::make_unique<uint8_t[]>(3);
    EXPECT_FALSE(npa::isRefused(shortAnswer.get(), 3));
}

}  // namespace
