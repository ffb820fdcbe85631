// The simulated printer's network life seen through the real corvelcfg:
// settings kept between runs, joining, address, reset, refusals.
#include <gtest/gtest.h>

#include "tests/e2e/ByteCompare.h"
#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

const std::vector<std::string> kConfigureWpa2 = {"-c", "--ssid=HomeNet", "--security=WPA2", "--passwd=secret123"};

const JsonValue* findItem(const JsonValue& entry, const std::string& group, const std::string& field)
{
    for (const JsonValue& item : entry["items"].items) {
        if (item["group"].text == group && item["field"].text == field) return &item;
    }
    return nullptr;
}

TEST(NetworkLife, SettingsOfOneRunAreSeenByTheNext)
{
    SimDir dir;
    SimRun configure = runIn(dir, {}, kConfigureWpa2);
    ASSERT_FALSE(configure.timedOut);
    EXPECT_EQ(configure.status, 0) << configure.err;
    ASSERT_EQ(configure.log.size(), 1u);
    const JsonValue& settings = configure.log[0];
    EXPECT_EQ(settings["kind"].text, "settings");
    EXPECT_TRUE(settings["envelope"].boolean);
    EXPECT_TRUE(settings["accepted"].boolean);
    const JsonValue* ssid = findItem(settings, "28", "08");
    ASSERT_NE(ssid, nullptr);
    EXPECT_EQ((*ssid)["text"].text, "HomeNet");
    EXPECT_EQ((*ssid)["value"].text, "486F6D654E657400");
    EXPECT_NE(dir.read("state.txt").find("28/08=\"HomeNet\\0\""), std::string::npos) << dir.read("state.txt");

    SimRun show = runIn(dir, {}, {"-s"});
    EXPECT_EQ(show.status, 0);
    EXPECT_TRUE(sameText("HomeNet\n", show.out));
}

TEST(NetworkLife, CompleteSettingsJoinAfterTheConfiguredPollsAndReportTheAddress)
{
    SimDir dir;
    ASSERT_EQ(runIn(dir, {}, kConfigureWpa2).status, 0);

    SimRun address = runIn(dir, {"--ip", "10.1.2.3"}, {"-ip"});
    EXPECT_EQ(address.status, 1) << "no address before the printer joined";
    EXPECT_TRUE(address.out.empty()) << address.out;

    SimRun wait = runIn(dir, {"--join-after", "3", "--ip", "10.1.2.3"}, {"-t"});
    EXPECT_EQ(wait.status, 0);
    ASSERT_EQ(wait.log.size(), 3u) << "joined on the third connection poll";
    for (size_t i = 0; i < wait.log.size(); ++i) {
        EXPECT_EQ(wait.log[i]["field"].text, "15");
        Bytes answer = bytesFromHex(wait.log[i]["answer"].text);
        EXPECT_EQ(answer.back(), i + 1 == wait.log.size() ? 0x00 : 0x01) << "poll " << i + 1;
    }
    EXPECT_NE(dir.read("state.txt").find("joined=1"), std::string::npos);

    address = runIn(dir, {"--ip", "10.1.2.3"}, {"-ip"});
    EXPECT_EQ(address.status, 0);
    EXPECT_TRUE(sameText("10.1.2.3\n", address.out));
}

TEST(NetworkLife, SettingsIncompleteForTheirSecurityNeverJoin)
{
    SimDir dir;
    // WPA2 without a key: the empty password prompt reads nothing from /dev/null.
    SimRun configure = runIn(dir, {}, {"-c", "--ssid=HomeNet", "--security=WPA2"});
    EXPECT_EQ(configure.status, 0);
    SimRun wait = runIn(dir, {"--join-after", "1"}, {"-t"});
    EXPECT_NE(wait.status, 0);
    EXPECT_EQ(wait.log.size(), 4u);
    EXPECT_NE(dir.read("state.txt").find("joined=0"), std::string::npos);
}

TEST(NetworkLife, ResetIsAcknowledgedAndDropsTheConnection)
{
    SimDir dir;
    ASSERT_EQ(runIn(dir, {}, kConfigureWpa2).status, 0);
    ASSERT_EQ(runIn(dir, {}, {"-t"}).status, 0);
    SimRun reset = runIn(dir, {}, {"-r"});
    EXPECT_EQ(reset.status, 0);
    ASSERT_EQ(reset.log.size(), 1u);
    // The 13-byte reset request, in its pass-through envelope.
    EXPECT_TRUE(sameBytes(bytesFromHex("A5001350E06302000D A5000A50E0DA01061400000101"),
                          bytesFromHex(reset.log[0]["raw"].text)));
    EXPECT_TRUE(sameBytes(bytesFromHex("A5000E50E06302000 8 A5000550E0DA0101"),
                          bytesFromHex(reset.log[0]["answer"].text)));
    std::string state = dir.read("state.txt");
    EXPECT_NE(state.find("joined=0"), std::string::npos) << state;
    EXPECT_NE(state.find("resets=1"), std::string::npos) << state;
}

TEST(NetworkLife, RejectedSettingsAreReportedAndNotKept)
{
    SimDir dir;
    SimRun configure = runIn(dir, {"--fault", "reject-settings"}, kConfigureWpa2);
    EXPECT_EQ(configure.status, 1);
    ASSERT_EQ(configure.log.size(), 1u);
    EXPECT_FALSE(configure.log[0]["accepted"].boolean);
    EXPECT_EQ(dir.read("state.txt").find("28/08="), std::string::npos);
}

TEST(NetworkLife, RefusedEnvelopeMakesTheUtilityRepeatInPlainForm)
{
    SimDir dir;
    ASSERT_EQ(runIn(dir, {}, kConfigureWpa2).status, 0);
    SimRun show = runIn(dir, {"--fault", "refuse-envelope"}, {"-s"});
    EXPECT_EQ(show.status, 0);
    EXPECT_TRUE(sameText("HomeNet\n", show.out));
    ASSERT_EQ(show.log.size(), 2u);
    EXPECT_TRUE(show.log[0]["envelope"].boolean);
    EXPECT_EQ(show.log[0]["faults"][0].text, "refuse-envelope");
    EXPECT_FALSE(show.log[1]["envelope"].boolean);
}

TEST(NetworkLife, DeviceStateReadyAfterTheConfiguredPolls)
{
    SimRun ready = run({"--ready-after", "2"}, {"-a"});
    EXPECT_EQ(ready.status, 0);
    ASSERT_EQ(ready.log.size(), 2u);
    EXPECT_EQ(bytesFromHex(ready.log[1]["answer"].text).back(), 0x2D);
}

}  // namespace
}  // namespace e2e
