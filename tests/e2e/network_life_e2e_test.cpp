// The simulated printer's network life across runs of the real corvelcfg:
// settings kept in the state file, joining after some polls, reset.
#include <gtest/gtest.h>

#include "tests/e2e/HexBytes.h"
#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

bool holds(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

TEST(NetworkLife, SettingsAreKeptJoinAfterThePollsAndResetDropsThem)
{
    SimDir dir;
    ASSERT_EQ(runCorvelcfg(dir, {}, {"-c", "--ssid=HomeNet", "--security=WPA2", "--passwd=secret123"}).status, 0);
    EXPECT_TRUE(sameText("HomeNet\n", runCorvelcfg(dir, {}, {"-s"}).out)) << "the new SSID in a second run";

    SimRun wait = runCorvelcfg(dir, {"--join-after", "2"}, {"-t"});
    EXPECT_EQ(wait.status, 0);
    ASSERT_EQ(wait.log.size(), 2u) << "joined on the second connection poll";
    EXPECT_EQ(bytesFromHex(logValue(wait.log[0], "answer")).back(), 0x01);
    EXPECT_EQ(bytesFromHex(logValue(wait.log[1], "answer")).back(), 0x00);

    EXPECT_EQ(runCorvelcfg(dir, {}, {"-r"}).status, 0);
    const std::string state = dir.read("state.txt");
    EXPECT_TRUE(holds(state, "joined=0") && holds(state, "resets=1")) << state;
}

}  // namespace
}  // namespace e2e
