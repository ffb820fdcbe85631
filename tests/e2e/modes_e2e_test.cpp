// Every run mode of the real corvelcfg against corvelsim, as data: what the
// printer holds and how it behaves, the arguments, and everything the run
// must show (exact request bytes, standard output, exit status).
#include <gtest/gtest.h>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

// Request packets built from the frame rules, independently of the utility.
Bytes cat(std::initializer_list<Bytes> parts)
{
    Bytes out;
    for (const Bytes& part : parts) out.insert(out.end(), part.begin(), part.end());
    return out;
}

Bytes be16(size_t v) { return {uint8_t(v >> 8), uint8_t(v)}; }
// A5, the length of what follows it, flags 50, the body.
Bytes packet(const Bytes& body) { return cat({{0xA5}, be16(body.size() + 1), {0x50}, body}); }
Bytes item(uint8_t group, uint8_t field, const Bytes& value)
{
    return cat({{group, field, 0x00}, be16(value.size()), value});
}
Bytes number(uint8_t group, uint8_t field, uint32_t v) { return item(group, field, cat({be16(v >> 16), be16(v)})); }
Bytes text(uint8_t group, uint8_t field, const std::string& s, bool withZero = true)
{
    return item(group, field, Bytes(s.c_str(), s.c_str() + s.size() + (withZero ? 1 : 0)));
}
Bytes settings(std::initializer_list<Bytes> items) { return packet(cat({{0xE0, 0xDA, 0x01}, cat(items)})); }
Bytes read(uint8_t group, uint8_t field) { return packet({0xE0, 0xD8, 0x00, group, field}); }
Bytes envelope(const Bytes& inner) { return packet(cat({{0xE0, 0x63, 0x02}, be16(inner.size()), inner})); }

Bytes mode(uint32_t v) { return number(0x28, 0x02, v); }
Bytes security(uint32_t v) { return number(0x28, 0x22, v); }
Bytes channel(uint32_t v) { return number(0x28, 0x05, v); }
Bytes ssid(const std::string& name) { return text(0x28, 0x08, name); }

const std::string kConfiguredState = "28/08=\"HomeNet\\0\"\n28/22=u32:4\n28/11=\"secret123\"\n";
const std::string kJoinedState = "joined=1\n" + kConfiguredState;

const std::vector<std::string> kBasicArgs = {"-c", "--ssid=HomeNet", "--security=WPA2", "--passwd=secret123"};
const Bytes kBasic = settings({mode(0), security(4), channel(6), ssid("HomeNet"), text(0x28, 0x11, "secret123")});
const std::vector<std::string> kAdvancedArgs = {"-ca", "--ssid=HomeNet", "--security=WPA-PER", "--psk=secret123",
                                                "--encryption=AES"};
const Bytes kAdvanced = settings(
    {text(0x28, 0x11, "secret123", false), number(0x28, 0x26, 4), mode(0), security(2), channel(6), ssid("HomeNet")});
// The default run sends the record's defaults: Managed, no security, channel 6, no SSID.
const Bytes kDefaultSettings = settings({mode(0), security(0), channel(6)});
const Bytes kReadSsid = read(0x28, 0x08), kReadConnection = read(0x28, 0x15), kReadAddress = read(0x0A, 0x02);
const Bytes kReadDeviceState = read(0x06, 0x1F), kReadAuthStatus = read(0x2A, 0x1D);
const Bytes kReadOrganization = read(0x2A, 0x06), kReadCommonName = read(0x2A, 0x0A);
const std::string kDefaultRunHead = "npa data going: 0Configuring the printer....\nResetting the printer....\n"
                                    "Connecting to wireless network....npa data going: 0";
const std::string kAddressLine = "Acquiring network address....\nIP-ADDRESS : ";

// Long runs in fake time (pauses of 10 and 50 s, up to seven attempts) go faster.
const std::vector<std::string> kRefuse = {"--fault", "refuse-envelope"};
const std::vector<std::string> kRefuseFast = {"--fault", "refuse-envelope", "--speed", "50"};
const std::vector<std::string> kSilent = {"--fault", "silent", "--speed", "50"};

struct ModeCase {
    const char* name;
    std::vector<std::string> args;
    std::vector<std::string> simOptions;
    std::string state;            // the state file before the run ("" = factory settings)
    std::vector<Bytes> requests;  // every request the printer receives, in order
    std::string out;
    int status;
    std::string errLine = {};  // a line standard error holds `errTimes` times ("" = not checked)
    int errTimes = 1;
    const char* input = nullptr;  // standard input: a file holding this, else /dev/null
};

void PrintTo(const ModeCase& c, std::ostream* out) { *out << c.name; }

class Mode : public ::testing::TestWithParam<ModeCase> {};

TEST_P(Mode, SendsTheExpectedRequestsAndReportsTheAnswer)
{
    const ModeCase& c = GetParam();
    SimDir dir;
    if (!c.state.empty()) dir.write("state.txt", "# corvelsim state v2\n" + c.state);
    SimRun run = runCorvelcfg(dir, c.simOptions, c.args, c.input);
    ASSERT_FALSE(run.timedOut) << "the run did not end";
    EXPECT_EQ(run.status, c.status) << run.err;
    EXPECT_EQ(run.out, c.out);
    if (!c.errLine.empty()) {
        EXPECT_EQ(occurrences(run.err, c.errLine), c.errTimes) << c.errLine << "in:\n" << run.err;
    }
    EXPECT_EQ(run.log.size(), c.requests.size()) << "requests the printer received";
    for (size_t i = 0; i < c.requests.size() && i < run.log.size(); ++i)
        EXPECT_EQ(logValue(run.log[i], "raw"), toHex(c.requests[i])) << "request " << i + 1;
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    Runs, Mode,
    ::testing::Values(
        ModeCase{"deviceStateReadyOnSecondPoll", {"-a"}, {"--ready-after", "2"}, "",
                 std::vector<Bytes>(2, envelope(kReadDeviceState)), "", 0},
        // Any other first argument: the full configuration with the defaults
        // (the option is not read), polls until joined, then the address.
        ModeCase{"defaultRun", {"--ssid=NotRead"}, {"--join-after", "2", "--ip", "10.0.0.9"}, kConfiguredState,
                 {envelope(kDefaultSettings), envelope(kReadConnection), envelope(kReadConnection),
                  envelope(kReadAddress)},
                 kDefaultRunHead + kAddressLine + "10.0.0.9\n", 0},
        // Without --passwd= the password is read from standard input, after a prompt.
        ModeCase{"passwordPrompt", {"-c", "--ssid=x", "--security=WPA"}, {}, "",
                 {envelope(settings({mode(0), security(2), channel(6), ssid("x"), text(0x28, 0x11, "s3cret")}))},
                 "npa data going: 2Please provide the password:\n\n", 0, {}, 1, "s3cret\n"},
        // A settings answer that does not end in 0x01: result 1, no repeat.
        ModeCase{"rejectedSettings", kBasicArgs, {"--fault", "reject-settings"}, "", {envelope(kBasic)},
                 "npa data going: 4", 1, "D [CVL] Basic config ret = 1\n"},
        // A silent printer: the status read ends with its own result.
        ModeCase{"silentAuthStatus", {"-802s"}, kSilent, "", {envelope(kReadAuthStatus), kReadAuthStatus}, "", 255,
                 "D [CVL] Auth status response (0 bytes)\n", 2},
        // Each entry of the mode table: repeated once, in plain form, after
        // the refusal of its first (wrapped) request, or ("-r", "-a") never.
        ModeCase{"advanced", kAdvancedArgs, kRefuse, "", {envelope(kAdvanced), kAdvanced},
                 "npa data going: 2npa data going: 2", 0, "D [CVL] Adv WPA-Personal ret = -1\n"},
        ModeCase{"address", {"-ip"}, kRefuse, kJoinedState, {envelope(kReadAddress), kReadAddress}, "192.168.1.57\n",
                 0},
        ModeCase{"showSsid", {"-s"}, kRefuse, kJoinedState, {envelope(kReadSsid), kReadSsid}, "HomeNet\n", 0},
        ModeCase{"reset", {"-r"}, {}, kJoinedState, {envelope(settings({item(0x06, 0x14, {0x01})}))}, "", 0},
        // A plain answer holds no inner answer packet: the status is not found either time.
        ModeCase{"authStatus", {"-802s"}, kRefuse, "", {envelope(kReadAuthStatus), kReadAuthStatus}, "", 255,
                 "D [CVL] 802.1x Authentication status...\n", 2},
        // Marked for retry, but its result is always 0, so it never repeats.
        ModeCase{"certificateSettings", {"-cer"}, kRefuse, "", {envelope(kReadOrganization), envelope(kReadCommonName)},
                 "", 0, "D [CVL] Organization", 0},
        ModeCase{"deviceState", {"-a"}, kRefuseFast, "", std::vector<Bytes>(6, envelope(kReadDeviceState)), "", 1},
        // The default run repeats its settings itself; everything after goes plain.
        ModeCase{"defaultRunRefused", {"-x"}, kRefuse, kJoinedState,
                 {envelope(kDefaultSettings), kDefaultSettings, kReadConnection, kReadAddress},
                 kDefaultRunHead + "npa data going: 0" + kAddressLine + "192.168.1.57\n", 0}),
    [](const ::testing::TestParamInfo<ModeCase>& info) { return info.param.name; });
// clang-format on

}  // namespace
}  // namespace e2e
