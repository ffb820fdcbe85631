// The simulated printer's parts that runs of the utility cannot reach:
// malformed requests, the exact bytes of some faults, a damaged state file
// (the libusb runs cut requests into packets of several sizes).
#include <gtest/gtest.h>

#include <algorithm>

#include "sim/printer/Faults.h"
#include "sim/printer/PrinterState.h"
#include "sim/printer/Responder.h"
#include "sim/process/StateFile.h"
#include "sim/wire/NpaPacket.h"

namespace corvelsim {
namespace {

Bytes hex(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    Bytes bytes;
    EXPECT_TRUE(fromHex(text, bytes)) << text;
    return bytes;
}

Bytes text(const std::string& s) { return Bytes(s.c_str(), s.c_str() + s.size() + 1); }  // with its zero
Bytes u32(unsigned v) { return {uint8_t(v >> 24), uint8_t(v >> 16), uint8_t(v >> 8), uint8_t(v)}; }

// The printer joins only when the settings hold the secret their security
// needs; end-to-end runs reach just the WPA rows of this.
TEST(PrinterState, JoinsOnlyWithTheSecretItsSecurityNeeds)
{
    // clang-format off
    const struct {
        const char* name;
        unsigned security;
        std::vector<Item> secrets;
        bool joins;
    } cases[] = {
        {"open", 0, {}, true},
        {"WEP without key", 1, {}, false},
        {"WEP with key 3", 1, {{0x28, 0x0D, text("k3")}}, true},
        {"WPA with PSK", 2, {{0x28, 0x11, text("psk")}}, true},
        {"WPA2 with empty PSK", 4, {{0x28, 0x11, {}}}, false},
        {"802.1x without user", 3, {{0x28, 0x11, text("psk")}}, false},
        {"802.1x with user", 3, {{0x2A, 0x02, text("alice")}}, true},
    };
    // clang-format on
    for (const auto& c : cases) {
        PrinterState printer(NetworkLife{});
        std::vector<Item> settings{{0x28, 0x22, u32(c.security)}, {0x28, 0x08, text("Lab")}};
        settings.insert(settings.end(), c.secrets.begin(), c.secrets.end());
        printer.applySettings(settings);
        EXPECT_EQ(printer.readField(0x28, 0x15), Bytes{uint8_t(c.joins ? 0x00 : 0x01)}) << c.name;
        const Bytes address = c.joins ? Bytes{192, 168, 1, 57} : Bytes{0, 0, 0, 0};
        EXPECT_EQ(printer.readField(0x0A, 0x02), address) << c.name;
    }
    // Without an SSID nothing joins, whatever the security.
    PrinterState noSsid(NetworkLife{});
    noSsid.applySettings({{0x28, 0x22, u32(0)}});
    EXPECT_EQ(noSsid.readField(0x28, 0x15), Bytes{0x01});
    // A reset drops the network and is counted; it is no setting.
    noSsid.joined = true;
    noSsid.applySettings({{0x06, 0x14, {0x01}}});
    EXPECT_TRUE(!noSsid.joined && noSsid.resets == 1 && noSsid.items.size() == 1);
}

// Settings with a malformed item are answered "not accepted" and not taken.
TEST(DecodePacket, TellsRequestsApartAndNamesWhatIsWrong)
{
    const char* const badEnvelope = "envelope does not hold one complete packet";
    // clang-format off
    const struct { const char* packet; RequestKind kind; const char* problem; } cases[] = {
        {"A5 00 06 50 E0 D8 00 2A 1D", RequestKind::Read, ""},
        {"A5 00 0A 50 E0 DA 01 06 14 00 00 01 01", RequestKind::Settings, ""},
        {"A5 00 0A 50 E0 DA 01 06 14 00 00 05 01", RequestKind::Settings, "malformed items"},
        {"A5 00 07 50 E0 D8 00 28 08 00", RequestKind::Unknown, "read request of 10 bytes"},
        {"A5 00 04 50 12 34 56", RequestKind::Unknown, "unknown command"},
        {"A5 00 02 50 E0", RequestKind::Unknown, "packet too short"},
        {"A5 00 0F 50 E0 63 02 00 08 A5 00 06 50 E0 D8 00 28 08", RequestKind::Unknown, badEnvelope},  // inner length
        {"A5 00 0F 50 E0 63 02 00 09 A5 00 09 50 E0 D8 00 28 08", RequestKind::Unknown, badEnvelope},  // inner packet
        {"A5 00 06 50 E0 63 02 00 00", RequestKind::Unknown, badEnvelope},
    };
    // clang-format on
    for (const auto& c : cases) {
        Request request = decodePacket(hex(c.packet));
        EXPECT_EQ(request.kind, c.kind) << c.packet;
        EXPECT_EQ(request.problem, c.problem) << c.packet;
        PrinterState state;
        const FaultSet faults;
        const bool wellFormedSettings = c.kind == RequestKind::Settings && request.problem.empty();
        EXPECT_EQ(Responder(state, faults).answer(request).settingsAccepted, wellFormedSettings) << c.packet;
        EXPECT_EQ(state.resets, wellFormedSettings ? 1 : 0) << c.packet;
    }
}

// The exact bytes of the faults whose effect runs of the utility cannot
// measure (silence, bit 7 and a late answer are played end to end).
TEST(Faults, ChangeOnlyHowTheAnswerTravels)
{
    const Bytes answer = makePacket(0x50, {0xE0, 0xD8, 0x00, 0x28, 0x08, 0x00, 0x00});
    // clang-format off
    const struct { const char* fault; const char* sent; } cases[] = {
        {"noise=3", "00FF5A" "A5000850E0D80028080000"},
        {"split", "A5000470E0D800" "A5000550280800" "00"},
        {"truncate=2", "A5000A50E0D80028080000"},
    };
    // clang-format on
    std::string error;
    for (const auto& c : cases) {
        FaultSet faults;
        ASSERT_TRUE(addFault(faults, c.fault, error)) << error;
        EXPECT_EQ(toHex(deliver(answer, faults).bytes), c.sent) << c.fault;
    }
}

TEST(StateFile, RoundTripsEveryKindOfValueAndSkipsLinesItCannotRead)
{
    PrinterState state(NetworkLife{});
    state.items = {{fieldKey(0x28, 0x08), text("Home \"Net\" \\ 1")},
                   {fieldKey(0x28, 0x22), u32(4)},
                   {fieldKey(0x2A, 0x24), {1}},
                   {fieldKey(0x28, 0x09), {}},
                   {fieldKey(0x2A, 0x03), hex("01FF004142")}};
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

    PrinterState damaged(NetworkLife{});
    parseState("joined=2\n28/08=\"unterminated\nZZ/01=u8:1\n28/05=u32:99999999999\n28/05=u8:300\nnoise\n28/02=u32:1\n",
               damaged, problems);
    EXPECT_EQ(problems.size(), 6u);
    EXPECT_EQ(damaged.items, (std::map<unsigned, Bytes>{{fieldKey(0x28, 0x02), u32(1)}}));
}

}  // namespace
}  // namespace corvelsim
