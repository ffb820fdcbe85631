// The simulated printer's network life across runs of the real corvelcfg:
// settings kept, joining after some polls, the address, reset.
#include <gtest/gtest.h>

#include "tests/e2e/HexBytes.h"
#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

const std::vector<std::string> kConfigureWpa2 = {"-c", "--ssid=HomeNet", "--security=WPA2", "--passwd=secret123"};

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST(NetworkLife, CompleteSettingsAreKeptJoinAfterThePollsAndResetDropsThem)
{
    SimDir dir;
    ASSERT_EQ(runCorvelcfg(dir, {}, kConfigureWpa2).status, 0);
    EXPECT_TRUE(sameText("HomeNet\n", runCorvelcfg(dir, {}, {"-s"}).out)) << "the new SSID in a second run";

    SimRun address = runCorvelcfg(dir, {"--ip", "10.1.2.3"}, {"-ip"});
    EXPECT_EQ(address.status, 1) << "no address before the printer joined";
    EXPECT_EQ(address.out, "");

    SimRun wait = runCorvelcfg(dir, {"--join-after", "3"}, {"-t"});
    EXPECT_EQ(wait.status, 0);
    ASSERT_EQ(wait.log.size(), 3u) << "joined on the third connection poll";
    for (size_t i = 0; i < wait.log.size(); ++i)
        EXPECT_EQ(bytesFromHex(logValue(wait.log[i], "answer")).back(), i == 2 ? 0x00 : 0x01) << "poll " << i + 1;

    address = runCorvelcfg(dir, {"--ip", "10.1.2.3"}, {"-ip"});
    EXPECT_EQ(address.status, 0);
    EXPECT_TRUE(sameText("10.1.2.3\n", address.out));

    SimRun reset = runCorvelcfg(dir, {}, {"-r"});
    EXPECT_EQ(reset.status, 0);
    ASSERT_EQ(reset.log.size(), 1u);
    const Bytes acknowledged = bytesFromHex("A5000E50E063020008 A5000550E0DA0101");
    EXPECT_TRUE(sameBytes(acknowledged, bytesFromHex(logValue(reset.log[0], "answer"))));
    const std::string state = dir.read("state.txt");
    EXPECT_TRUE(holds(state, "joined=0") && holds(state, "resets=1")) << state;
}

TEST(NetworkLife, SettingsIncompleteForTheirSecurityNeverJoin)
{
    SimDir dir;
    // WPA2 without a key: the password prompt reads nothing from /dev/null.
    EXPECT_EQ(runCorvelcfg(dir, {}, {"-c", "--ssid=HomeNet", "--security=WPA2"}).status, 0);
    SimRun wait = runCorvelcfg(dir, {"--join-after", "1"}, {"-t"});
    EXPECT_NE(wait.status, 0);
    EXPECT_EQ(wait.log.size(), 4u);
    EXPECT_TRUE(holds(dir.read("state.txt"), "joined=0"));
}

}  // namespace
}  // namespace e2e
