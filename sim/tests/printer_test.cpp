// The printer's answers, its network life, its faults and its state file.
#include <gtest/gtest.h>

#include "sim/Faults.h"
#include "sim/NpaPacket.h"
#include "sim/Responder.h"
#include "sim/StateFile.h"

namespace corvelsim {
namespace {

Bytes textItemValue(const std::string& text)
{
    Bytes value(text.begin(), text.end());
    value.push_back(0);
    return value;
}

Bytes u32(unsigned v) { return {uint8_t(v >> 24), uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)}; }

Request readOf(uint8_t group, uint8_t field, bool wrapped = false)
{
    if (!wrapped) return decodePacket({0xA5, 0x00, 0x06, 0x50, 0xE0, 0xD8, 0x00, group, field});
    return decodePacket({0xA5, 0x00, 0x0F, 0x50, 0xE0, 0x63, 0x02, 0x00, 0x09, 0xA5, 0x00, 0x06, 0x50, 0xE0, 0xD8,
                         0x00, group, field});
}

Request settingsOf(const std::vector<Item>& items)
{
    Request request;
    request.kind = RequestKind::Settings;
    request.items = items;
    request.command = {0xE0, 0xDA, 0x01};
    return request;
}

TEST(Responder, ReadAnswersRepeatTheRequestThenLengthAndValue)
{
    PrinterState state(NetworkLife{});
    FaultSet faults;
    Responder responder(state, faults);
    state.items[fieldKey(0x2A, 0x06)] = textItemValue("Org");
    EXPECT_EQ(toHex(responder.answer(readOf(0x2A, 0x06)).answer), "A5000C50E0D8002A0600044F726700");
    EXPECT_EQ(toHex(responder.answer(readOf(0x2A, 0x0A)).answer), "A5000850E0D8002A0A0000");
    EXPECT_EQ(toHex(responder.answer(readOf(0x0A, 0x02, true)).answer),
              "A5001550E06302000FA5000C50E0D8000A020004" "00000000");
    faults.refuseEnvelope = true;
    EXPECT_EQ(toHex(responder.answer(readOf(0x0A, 0x02, true)).answer), "A50004D4E06302");
    EXPECT_EQ(toHex(responder.answer(readOf(0x0A, 0x02)).answer), "A5000C50E0D8000A02000400000000");
}

struct JoinCase {
    const char* name;
    std::vector<Item> settings;
    bool joins;
};

TEST(PrinterState, JoinsOnlyWithSettingsCompleteForTheirSecurity)
{
    const Item ssid{0x28, 0x08, textItemValue("Net")};
    const JoinCase cases[] = {
        {"open network", {ssid}, true},
        {"no SSID", {{0x28, 0x22, u32(0)}}, false},
        {"WPA with key", {ssid, {0x28, 0x22, u32(2)}, {0x28, 0x11, textItemValue("k")}}, true},
        {"WPA2 with empty key", {ssid, {0x28, 0x22, u32(4)}, {0x28, 0x11, {}}}, false},
        {"WEP with key 3", {ssid, {0x28, 0x22, u32(1)}, {0x28, 0x09, {}}, {0x28, 0x0D, {'a'}}}, true},
        {"WEP without keys", {ssid, {0x28, 0x22, u32(1)}}, false},
        {"802.1x with user", {ssid, {0x28, 0x22, u32(3)}, {0x2A, 0x02, textItemValue("u")}}, true},
        {"802.1x without user", {ssid, {0x28, 0x22, u32(3)}}, false},
    };
    for (const JoinCase& c : cases) {
        SCOPED_TRACE(c.name);
        NetworkLife life;
        life.joinAfterPolls = 2;
        PrinterState state(life);
        FaultSet faults;
        Responder responder(state, faults);
        EXPECT_TRUE(responder.answer(settingsOf(c.settings)).settingsAccepted);
        EXPECT_EQ(state.readField(0x28, 0x15), Bytes{0x01});
        EXPECT_EQ(state.readField(0x28, 0x15), Bytes{uint8_t(c.joins ? 0x00 : 0x01)});
        EXPECT_EQ(state.readField(0x0A, 0x02), c.joins ? Bytes({192, 168, 1, 57}) : Bytes({0, 0, 0, 0}));
    }
}

TEST(PrinterState, ResetAndNewSettingsDropTheConnection)
{
    PrinterState state(NetworkLife{});
    state.applySettings({{0x28, 0x08, textItemValue("Net")}});
    ASSERT_EQ(state.readField(0x28, 0x15), Bytes{0x00});
    state.applySettings({{0x06, 0x14, {0x01}}});
    EXPECT_FALSE(state.joined);
    EXPECT_EQ(state.resets, 1);
    EXPECT_EQ(state.items.count(fieldKey(0x06, 0x14)), 0u);
    ASSERT_EQ(state.readField(0x28, 0x15), Bytes{0x00});
    state.applySettings({{0x28, 0x05, u32(11)}});
    EXPECT_FALSE(state.joined);
}

TEST(PrinterState, AuthStatusFollowsSecurityUnlessSetByHand)
{
    PrinterState state(NetworkLife{});
    EXPECT_EQ(state.readField(0x2A, 0x1D), Bytes{0});
    state.applySettings({{0x28, 0x08, textItemValue("Net")}, {0x28, 0x22, u32(3)}, {0x2A, 0x02, {'u'}}});
    EXPECT_EQ(state.readField(0x2A, 0x1D), Bytes{10});
    state.readField(0x28, 0x15);
    EXPECT_EQ(state.readField(0x2A, 0x1D), Bytes{2});
    state.items[fieldKey(0x2A, 0x1D)] = {7};
    EXPECT_EQ(state.readField(0x2A, 0x1D), Bytes{7});
}

TEST(Faults, ChangeOnlyHowTheAnswerTravels)
{
    const Bytes answer = makePacket(0x50, {0xE0, 0xD8, 0x00, 0x28, 0x08, 0x00, 0x00});
    struct Case {
        std::vector<std::string> faultTexts;
        std::string sent;
    } cases[] = {
        {{}, "A5000850E0D80028080000"},
        {{"silent"}, ""},
        {{"noise=3"}, "00FF5A" "A5000850E0D80028080000"},
        {{"split"}, "A5000470E0D800" "A5000550280800" "00"},
        {{"bit7"}, "A5000870E0D80028080000" "A5000480E0FFFF"},
        {{"bit7=instead"}, "A5000480E0FFFF"},
        {{"truncate=2"}, "A5000A50E0D80028080000"},
        {{"late=20"}, "A5000850E0D80028080000"},
    };
    for (const Case& c : cases) {
        FaultSet faults;
        std::string error;
        for (const std::string& faultText : c.faultTexts) ASSERT_TRUE(addFault(faults, faultText, error)) << error;
        EXPECT_EQ(toHex(deliver(answer, faults).bytes), c.sent) << (c.faultTexts.empty() ? "" : c.faultTexts[0]);
    }
    FaultSet faults;
    std::string error;
    for (const char* bad : {"late", "split=1", "noise=x", "bit7=before", "slow"})
        EXPECT_FALSE(addFault(faults, bad, error)) << bad;
}

TEST(StateFile, RoundTripsEveryKindOfValue)
{
    PrinterState state(NetworkLife{});
    state.items[fieldKey(0x28, 0x08)] = textItemValue("Home \"Net\" \\ 1");
    state.items[fieldKey(0x28, 0x22)] = u32(4);
    state.items[fieldKey(0x2A, 0x24)] = {1};
    state.items[fieldKey(0x28, 0x09)] = {};
    state.items[fieldKey(0x2A, 0x03)] = {0x01, 0xFF, 0x00, 0x41, 0x42};
    state.joined = true;
    state.connectionPolls = 3;
    state.resets = 2;

    PrinterState loaded(NetworkLife{});
    std::vector<std::string> problems;
    parseState(formatState(state), loaded, problems);
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(loaded.items, state.items);
    EXPECT_TRUE(loaded.joined);
    EXPECT_EQ(loaded.connectionPolls, 3);
    EXPECT_EQ(loaded.resets, 2);
    EXPECT_NE(formatState(state).find("28/22=u32:4"), std::string::npos);
}

TEST(StateFile, SkipsLinesItCannotRead)
{
    PrinterState state(NetworkLife{});
    std::vector<std::string> problems;
    parseState("joined=2\n28/08=\"unterminated\nZZ/01=u8:1\n28/05=u32:99999999999\n28/05=u8:300\nnoise\n"
               "28/02=u32:1\n",
               state, problems);
    EXPECT_EQ(problems.size(), 6u);
    EXPECT_EQ(state.items.size(), 1u);
    EXPECT_EQ(state.items[fieldKey(0x28, 0x02)], u32(1));
}

}  // namespace
}  // namespace corvelsim
