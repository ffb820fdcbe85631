// "-npa" end to end: the real corvelcfg sends a raw packet to corvelsim and
// dumps what it kept of the answer.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/e2e/ByteCompare.h"
#include "tests/e2e/NpaAnswer.h"
#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

const std::string kReadSsidHex = "A5 00 06 50 E0 D8 00 28 08\n";
const Bytes kReadSsid = bytesFromHex(kReadSsidHex);

// The printer's answer to a read of 28/08 with no SSID set, as kept.
const Bytes kEmptySsidKept = bytesFromHex("E0 D8 00 28 08 00 00");

SimRun runNpa(const std::vector<std::string>& simOptions, const std::string& hexFile,
              const std::vector<std::string>& extraArgs = {})
{
    std::vector<std::string> args = {"-npa", "-file", "npa-request.hex"};
    args.insert(args.end(), extraArgs.begin(), extraArgs.end());
    return run(simOptions, args, {{"npa-request.hex", hexFile}});
}

// Checks what every "-npa" run shows and returns the bytes the log says the
// printer sent.
Bytes checkNpaRun(const SimRun& result, const Bytes& request)
{
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(result.badLogLines.empty());
    EXPECT_TRUE(sameText("npaFileData: (" + std::to_string(request.size() * 2) + " bytes) " +
                             [&] {
                                 std::string hex;
                                 char two[3];
                                 for (uint8_t b : request) {
                                     std::snprintf(two, sizeof two, "%02X", b);
                                     hex += two;
                                 }
                                 return hex;
                             }() + "\n",
                         result.out));
    if (result.log.size() != 1) {
        ADD_FAILURE() << "expected one logged request, got " << result.log.size();
        return {};
    }
    EXPECT_TRUE(sameBytes(request, bytesFromHex(result.log[0]["raw"].text)));
    Bytes sent = bytesFromHex(result.log[0]["answer"].text);
    EXPECT_TRUE(startsWithText(npaTrace(request, keptContent(sent)), result.err));
    return sent;
}

TEST(NpaEndToEnd, ReadOfTheSsidIsSentUnchangedAndItsAnswerDumped)
{
    SimRun result = runNpa({}, kReadSsidHex);
    Bytes sent = checkNpaRun(result, kReadSsid);
    ASSERT_EQ(result.log.size(), 1u);
    const JsonValue& entry = result.log[0];
    EXPECT_EQ(entry["kind"].text, "read");
    EXPECT_FALSE(entry["envelope"].boolean);
    EXPECT_EQ(entry["group"].text, "28");
    EXPECT_EQ(entry["field"].text, "08");
    EXPECT_TRUE(sameBytes(kEmptySsidKept, keptContent(sent)));
}

TEST(NpaEndToEnd, WrappedReadIsAnsweredInAnEnvelope)
{
    const std::string wrapped = "A5000F50E063020009A5000650E0D8002A1D";
    SimRun result = runNpa({}, wrapped);
    Bytes sent = checkNpaRun(result, bytesFromHex(wrapped));
    ASSERT_EQ(result.log.size(), 1u);
    EXPECT_TRUE(result.log[0]["envelope"].boolean);
    // Envelope command, inner length 12, then the inner answer: 802.1x not enabled.
    EXPECT_TRUE(sameBytes(bytesFromHex("E0 63 02 00 0C A5 00 09 50 E0 D8 00 2A 1D 00 01 00"), keptContent(sent)));
}

TEST(NpaEndToEnd, UnknownRequestIsRefusedAndTheRefusalDropped)
{
    const std::string odd = "A5 00 04 50 12 34 56";
    SimRun result = runNpa({}, odd);
    Bytes sent = checkNpaRun(result, bytesFromHex(odd));
    ASSERT_EQ(result.log.size(), 1u);
    EXPECT_EQ(result.log[0]["kind"].text, "unknown");
    ASSERT_GE(sent.size(), 4u);
    EXPECT_EQ(sent[3], 0xD4);
    EXPECT_TRUE(keptContent(sent).empty());
}

TEST(NpaEndToEnd, MissingDeviceNodeIsReportedAndNothingIsSent)
{
    SimRun result = runNpa({}, kReadSsidHex, {"/dev/usb/lp3"});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.err.find("D [CVL] Failed to open usb device '/dev/usb/lp3'!\n"), std::string::npos)
        << result.err;
    EXPECT_NE(result.err.find("D [CVL] sendNPA response (0 bytes)\n"), std::string::npos) << result.err;
    EXPECT_TRUE(result.log.empty());
}

TEST(NpaEndToEnd, FurtherDeviceNodesAreServedToo)
{
    SimRun result = runNpa({"--lp", "0", "--lp", "3"}, kReadSsidHex, {"/dev/usb/lp3"});
    Bytes sent = checkNpaRun(result, kReadSsid);
    ASSERT_EQ(result.log.size(), 1u);
    EXPECT_EQ(result.log[0]["port"].number, 3);
    EXPECT_TRUE(sameBytes(kEmptySsidKept, keptContent(sent)));
}

// One fault mode: the simulator options, what the utility keeps, and a check
// of the shape of what the printer sent.
struct FaultCase {
    const char* name;
    std::vector<std::string> simOptions;
    std::string request;
    Bytes expectedKept;
    bool (*shapeOk)(const Bytes& sent);
    bool faultLogged = true;
};

bool startsWithNoise(const Bytes& sent)
{
    return !sent.empty() && sent[0] != 0xA5 && std::find(sent.begin(), sent.end(), 0xA5) != sent.end();
}
bool nothingSent(const Bytes& sent) { return sent.empty(); }
bool twoPacketsFirstAnnouncesMore(const Bytes& sent)
{
    return sent.size() > 4 && sent[0] == 0xA5 && (sent[3] & 0x20) &&
           sent.size() > size_t(3 + (sent[1] << 8 | sent[2])) && sent[3 + (sent[1] << 8 | sent[2])] == 0xA5;
}
bool endsWithDropPacket(const Bytes& sent)
{
    size_t first = 3 + size_t(sent.size() > 3 ? (sent[1] << 8 | sent[2]) : 0);
    return sent.size() > first + 3 && (sent[3] & 0x20) && sent[first + 3] == 0x80;
}
bool onlyDropPacket(const Bytes& sent) { return sent.size() > 3 && sent[0] == 0xA5 && sent[3] == 0x80; }
bool announcesMoreThanSent(const Bytes& sent)
{
    return sent.size() > 3 && size_t(3 + (sent[1] << 8 | sent[2])) > sent.size();
}
bool plainAnswer(const Bytes& sent) { return sent.size() > 3 && sent[0] == 0xA5 && sent[3] == 0x50; }
bool refusal(const Bytes& sent) { return sent.size() > 3 && sent[3] == 0xD4; }

const std::string kWrappedSsid = "A5000F50E063020009A5000650E0D8002808";

void PrintTo(const FaultCase& fault, std::ostream* out) { *out << fault.name; }

class NpaFault : public ::testing::TestWithParam<FaultCase> {};

TEST_P(NpaFault, UtilityKeepsWhatTheFrameRulesAllow)
{
    const FaultCase& fault = GetParam();
    Bytes request = bytesFromHex(fault.request);
    SimRun result = runNpa(fault.simOptions, fault.request);
    Bytes sent = checkNpaRun(result, request);
    ASSERT_EQ(result.log.size(), 1u);
    EXPECT_TRUE(fault.shapeOk(sent)) << sideBySide({}, sent);
    EXPECT_TRUE(sameBytes(fault.expectedKept, keptContent(sent)));
    EXPECT_EQ(!result.log[0]["faults"].items.empty(), fault.faultLogged);
}

const Bytes kWrappedSsidKept = bytesFromHex("E0 63 02 00 0B A5 00 08 50 E0 D8 00 28 08 00 00");

INSTANTIATE_TEST_SUITE_P(
    Faults, NpaFault,
    ::testing::Values(
        FaultCase{"none", {}, kReadSsidHex, kEmptySsidKept, plainAnswer, false},
        FaultCase{"silent", {"--fault", "silent"}, kReadSsidHex, {}, nothingSent},
        FaultCase{"noise", {"--fault", "noise"}, kReadSsidHex, kEmptySsidKept, startsWithNoise},
        FaultCase{"split", {"--fault", "split"}, kReadSsidHex, kEmptySsidKept, twoPacketsFirstAnnouncesMore},
        FaultCase{"bit7After", {"--fault", "bit7=after"}, kReadSsidHex, kEmptySsidKept, endsWithDropPacket},
        FaultCase{"bit7Instead", {"--fault", "bit7=instead"}, kReadSsidHex, {}, onlyDropPacket},
        FaultCase{"truncated", {"--fault", "truncate=3"}, kReadSsidHex, {}, announcesMoreThanSent},
        FaultCase{"lateWithinLimit", {"--fault", "late=150"}, kReadSsidHex, kEmptySsidKept, plainAnswer},
        FaultCase{"splitWithNoise", {"--fault", "split=3", "--fault", "noise=2"}, kReadSsidHex, kEmptySsidKept,
                  startsWithNoise},
        FaultCase{"refusedEnvelope", {"--fault", "refuse-envelope"}, kWrappedSsid, {}, refusal},
        FaultCase{"plainDespiteRefusal", {"--fault", "refuse-envelope"}, kReadSsidHex, kEmptySsidKept, plainAnswer, false},
        FaultCase{"wrapped", {}, kWrappedSsid, kWrappedSsidKept, plainAnswer, false}),
    [](const ::testing::TestParamInfo<FaultCase>& info) { return info.param.name; });

}  // namespace
}  // namespace e2e
