// The real corvelcfg against a corvelsim that refuses envelopes, rejects
// settings or stays silent: which modes repeat in plain form, how many
// attempts each makes, and that every mode ends with its documented result.
#include <gtest/gtest.h>

#include "tests/e2e/ModeCase.h"
#include "tests/e2e/NpaFrames.h"

namespace e2e {
namespace {

const std::string kJoinedState = "joined=1\n28/08=\"HomeNet\\0\"\n28/22=u32:4\n28/11=\"secret123\"\n";

const std::vector<std::string> kConfigureWpa2 = {"-c", "--ssid=HomeNet", "--security=WPA2", "--passwd=secret123"};
const std::vector<std::string> kAdvancedWpa = {"-ca", "--ssid=HomeNet", "--security=WPA-PER", "--psk=secret123"};

const Bytes kBasicWpa2 = settingsRequest({numberItem(0x28, 0x02, 0), numberItem(0x28, 0x22, 4),
                                          numberItem(0x28, 0x05, 6), textItem(0x28, 0x08, "HomeNet", true),
                                          textItem(0x28, 0x11, "secret123", true)});
const Bytes kAdvancedWpaPersonal =
    settingsRequest({textItem(0x28, 0x11, "secret123", false), numberItem(0x28, 0x02, 0), numberItem(0x28, 0x22, 2),
                     numberItem(0x28, 0x05, 6), textItem(0x28, 0x08, "HomeNet", true)});
const Bytes kDefaultSettings =
    settingsRequest({numberItem(0x28, 0x02, 0), numberItem(0x28, 0x22, 0), numberItem(0x28, 0x05, 6)});
const Bytes kReset = settingsRequest({item(0x06, 0x14, {0x01})});

const Bytes kReadSsid = readRequest(0x28, 0x08);
const Bytes kReadConnection = readRequest(0x28, 0x15);
const Bytes kReadDeviceState = readRequest(0x06, 0x1F);
const Bytes kReadAddress = readRequest(0x0A, 0x02);
const Bytes kReadAuthStatus = readRequest(0x2A, 0x1D);
const Bytes kReadOrganization = readRequest(0x2A, 0x06);
const Bytes kReadCommonName = readRequest(0x2A, 0x0A);

// Long runs in fake time (pauses of 10 and 50 s, up to seven attempts): faster.
const char* const kFast = "50";

std::vector<Bytes> times(size_t count, const Bytes& request) { return std::vector<Bytes>(count, request); }

std::vector<Bytes> concat(std::initializer_list<std::vector<Bytes>> parts)
{
    std::vector<Bytes> all;
    for (const auto& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

const std::string kDefaultRunHead =
    "npa data going: 0Configuring the printer....\nResetting the printer....\n"
    "Connecting to wireless network....npa data going: 0";

class RefusedEnvelope : public ::testing::TestWithParam<ModeCase> {};

// The modes that retry are repeated once, in plain form, after the refusal
// of their first (wrapped) request; "-r" and "-a" never are.
TEST_P(RefusedEnvelope, OnlyRetryingModesRepeatOnceInPlainForm) { checkModeRun(GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Modes, RefusedEnvelope,
    ::testing::Values(
        ModeCase{"basic", kConfigureWpa2, {"--fault", "refuse-envelope"}, "",
                 {envelope(kBasicWpa2), kBasicWpa2}, "npa data going: 4npa data going: 4", 0,
                 "D [CVL] Basic config ret = -1\n"},
        ModeCase{"advanced", kAdvancedWpa, {"--fault", "refuse-envelope"}, "",
                 {envelope(kAdvancedWpaPersonal), kAdvancedWpaPersonal}, "npa data going: 2npa data going: 2", 0,
                 "D [CVL] Adv WPA-Personal ret = -1\n"},
        ModeCase{"address", {"-ip"}, {"--fault", "refuse-envelope"}, kJoinedState,
                 {envelope(kReadAddress), kReadAddress}, "192.168.1.57\n", 0},
        ModeCase{"waitForConnection", {"-t"}, {"--fault", "refuse-envelope"}, kJoinedState,
                 {envelope(kReadConnection), kReadConnection}, "", 0},
        ModeCase{"showSsid", {"-s"}, {"--fault", "refuse-envelope"}, kJoinedState, {envelope(kReadSsid), kReadSsid},
                 "HomeNet\n", 0},
        // A plain answer holds no inner answer packet, so the status is not
        // found the second time either.
        ModeCase{"authStatus", {"-802s"}, {"--fault", "refuse-envelope"}, "",
                 {envelope(kReadAuthStatus), kReadAuthStatus}, "", 255,
                 "D [CVL] 802.1x Authentication status...\n", 2},
        // Marked for retry, but its result is always 0, so it never repeats.
        ModeCase{"certificateSettings", {"-cer"}, {"--fault", "refuse-envelope"}, "",
                 {envelope(kReadOrganization), envelope(kReadCommonName)}, "", 0, "D [CVL] Organization", 0},
        // Never repeated by the driver: only their own attempts, all wrapped.
        ModeCase{"reset", {"-r"}, {"--fault", "refuse-envelope", "--speed", kFast}, "",
                 times(2, envelope(kReset)), "", 1},
        ModeCase{"deviceState", {"-a"}, {"--fault", "refuse-envelope", "--speed", kFast}, "",
                 times(6, envelope(kReadDeviceState)), "", 1},
        // The default run repeats its settings itself; everything after goes plain.
        ModeCase{"defaultRun", {"-x"}, {"--fault", "refuse-envelope"}, kJoinedState,
                 {envelope(kDefaultSettings), kDefaultSettings, kReadConnection, kReadAddress},
                 kDefaultRunHead + "npa data going: 0Acquiring network address....\nIP-ADDRESS : 192.168.1.57\n", 0}),
    ModeCaseName());

class RejectedSettings : public ::testing::TestWithParam<ModeCase> {};

TEST_P(RejectedSettings, EndWithOneAndNoRepeat) { checkModeRun(GetParam()); }

INSTANTIATE_TEST_SUITE_P(
    Modes, RejectedSettings,
    ::testing::Values(ModeCase{"basic", kConfigureWpa2, {"--fault", "reject-settings"}, "", {envelope(kBasicWpa2)},
                               "npa data going: 4", 1, "D [CVL] Basic config ret = 1\n"},
                      ModeCase{"advanced", kAdvancedWpa, {"--fault", "reject-settings"}, "",
                               {envelope(kAdvancedWpaPersonal)}, "npa data going: 2", 1,
                               "D [CVL] Adv WPA-Personal ret = 1\n"}),
    ModeCaseName());

class SilentPrinter : public ::testing::TestWithParam<ModeCase> {};

// Every mode ends after its attempts run out, with its own result.
TEST_P(SilentPrinter, EveryModeEndsWithItsResult) { checkModeRun(GetParam()); }

const std::vector<std::string> kSilent = {"--fault", "silent", "--speed", kFast};

INSTANTIATE_TEST_SUITE_P(
    Modes, SilentPrinter,
    ::testing::Values(
        ModeCase{"basic", kConfigureWpa2, kSilent, "", {envelope(kBasicWpa2), kBasicWpa2},
                 "npa data going: 4npa data going: 4", 255},
        ModeCase{"showSsid", {"-s"}, kSilent, "", times(7, envelope(kReadSsid)), "", 1},
        ModeCase{"address", {"-ip"}, kSilent, "", times(7, envelope(kReadAddress)), "", 1},
        // The last attempt read nothing: 1, "not connected".
        ModeCase{"waitForConnection", {"-t"}, kSilent, "", times(4, envelope(kReadConnection)), "", 1},
        ModeCase{"deviceState", {"-a"}, kSilent, "", times(6, envelope(kReadDeviceState)), "", 1},
        ModeCase{"reset", {"-r"}, kSilent, "", times(2, envelope(kReset)), "", 1},
        ModeCase{"authStatus", {"-802s"}, kSilent, "", {envelope(kReadAuthStatus), kReadAuthStatus}, "", 255,
                 "D [CVL] Auth status response (0 bytes)\n", 2},
        ModeCase{"certificateSettings", {"-cer"}, kSilent, "",
                 {envelope(kReadOrganization), envelope(kReadCommonName)}, "", 0},
        ModeCase{"defaultRun", {"-x"}, kSilent, "",
                 concat({{envelope(kDefaultSettings), kDefaultSettings}, times(4, kReadConnection),
                         times(7, kReadAddress)}),
                 kDefaultRunHead + "npa data going: 0Acquiring network address....\nIP-ADDRESS : ", 0}),
    ModeCaseName());

}  // namespace
}  // namespace e2e
