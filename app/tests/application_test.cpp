// The run driver with the real configurator and certificate processor, over a
// scripted printer behind the transport singleton and the fake clock: what
// each command line puts on the wire, prints and exits with. The certificate
// commands are played end to end.
#include <gtest/gtest.h>

#include <cerrno>
#include <deque>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "app/Application.h"
#include "app/StandardStreams.h"
#include "tests/support/CaptureOutput.h"
#include "tests/support/ScriptedConnector.h"
#include "tests/support/TempFile.h"

namespace {

using Lines = std::vector<std::string>;

struct RunResult : Captured {
    int status = 0;
};

class RunDriver : public testing::Test {
protected:
    // One answer per open, arriving at once; none left: silence.
    void script(const std::deque<std::string>& answers)
    {
        scripted.printer = ScriptedPrinter{};
        for (const std::string& hex : answers) scripted.printer.addAnswer(hex);
    }
    Lines writesInHex() const
    {
        Lines hex;
        for (const std::string& request : scripted.printer.writes) hex.push_back(hexOf(request));
        return hex;
    }
    RunResult run(std::vector<std::string> args)
    {
        args.insert(args.begin(), "corvelcfg");
        std::vector<const char*> argv;
        for (const std::string& a : args) argv.push_back(a.c_str());
        RunResult result;
        static_cast<Captured&>(result) =
            captureOutput([&] { result.status = runCorvelcfg(static_cast<int>(argv.size()), argv.data()); });
        return result;
    }

    ScopedScriptedPrinter scripted;
    const ScriptedPrinter& printer = scripted.printer;
    FakeClock& clock = scripted.fake.clock;
};

// Read requests for one group/field, wrapped in the pass-through envelope and plain.
std::string plainRead(const std::string& key) { return "A5 00 06 50 E0 D8 00 " + key; }
std::string wrappedRead(const std::string& key) { return "A5 00 0F 50 E0 63 02 00 09 " + plainRead(key); }

const char* const kRefused = "A5 00 02 D4 00";
// Mode, security and channel at their defaults.
const std::string kBasicItems = "28 02 00 00 04 00 00 00 00 28 22 00 00 04 00 00 00 00 28 05 00 00 04 00 00 00 06";
const std::string kPlainSettings = "A5 00 28 50 E0 DA 01 " + kBasicItems + " 28 08 00 00 04 6E 65 74 00";  // SSID "net"
const std::string kWrappedSettings = "A5 00 31 50 E0 63 02 00 2B " + kPlainSettings;
const std::string kPlainNoSSID = "A5 00 1F 50 E0 DA 01 " + kBasicItems;
const std::string kWrappedNoSSID = "A5 00 28 50 E0 63 02 00 22 " + kPlainNoSSID;
const std::string kWrappedReset = "A5 00 13 50 E0 63 02 00 0D A5 00 0A 50 E0 DA 01 06 14 00 00 01 01";
// Every settings request built shows its security value on standard output.
const std::string kShown = "npa data going: 0";

Lines repeated(const std::string& request, size_t times) { return Lines(times, request); }
Lines operator+(Lines a, const Lines& b) { return a.insert(a.end(), b.begin(), b.end()), a; }

// One row per kind of mode (each mode's requests are checked end to end): a
// refusal (-1) is asked again once in plain form where the mode allows, and
// the exit status is the result's low eight bits. An input file that cannot be
// read stops the run before any exchange.
TEST_F(RunDriver, RequestsResultsAndPlainRetries)
{
    const TempFile packet("0xa5, 00 6 5");  // blanks, commas and the x skipped; the odd digit dropped
    const TempFile settings("--ssid=net\n");
    // clang-format off
    const struct {
        std::vector<std::string> args;
        std::deque<std::string> answers;
        Lines writes;
        int status;
        std::string out;
        const char* err = nullptr;  // the whole standard error, where given
        const char* path = "/dev/usb/lp0";  // the printer every exchange opened
    } cases[] = {
        {{"-c", "--ssid=net"}, {kRefused, "A5 00 04 50 E0 DA 01"}, {kWrappedSettings, kPlainSettings}, 0, kShown + kShown},
        {{"-t"}, {kRefused, kRefused}, {wrappedRead("28 15"), plainRead("28 15")}, 255, ""},
        // Reset and device status are never asked again in plain form.
        {{"-r"}, {kRefused, kRefused}, repeated(kWrappedReset, 2), 1, ""},
        // With no USB path, the packet file's name (it has no "-") is taken for one.
        {{"-npa", "-file", packet.path}, {}, {"0A 50 06"}, 0, "npaFileData: (7 bytes) 0a50065\n", nullptr,
         packet.path.c_str()},
        // Any other first argument runs the whole configuration (options unread) and always succeeds.
        {{"--ssid=net"}, {},
         Lines{kWrappedNoSSID, kPlainNoSSID} + repeated(plainRead("28 15"), 4) + repeated(plainRead("0A 02"), 7), 0,
         kShown + "Configuring the printer....\nResetting the printer....\nConnecting to wireless network...." + kShown +
             kShown + "Acquiring network address....\nIP-ADDRESS : "},
        {{"-c", "-file", settings.path}, {kRefused, "A5 00 04 50 E0 DA 01"}, {kWrappedSettings, kPlainSettings}, 0,
         kShown + kShown},
        {{"-c", "-file", "/nonexistent/net.conf"}, {}, {}, kInputFileError, "",
         "D [CVL] Cannot read settings file '/nonexistent/net.conf': No such file or directory\n"},
        {{"-ca", "-file"}, {}, {}, kInputFileError, "", "D [CVL] -file needs the name of a settings file!\n"},
        {{"-npa", "-file"}, {}, {}, kInputFileError, "", "D [CVL] -file needs the name of a packet file!\n"},
    };
    // clang-format on
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[0] + (c.args.size() > 1 ? " " + c.args[1] : ""));
        script(c.answers);
        const RunResult result = run(c.args);
        EXPECT_EQ(writesInHex(), c.writes);
        EXPECT_EQ(printer.paths, Lines(c.writes.size(), c.path));
        EXPECT_EQ(result.status, c.status);
        EXPECT_EQ(result.out, c.out);
        if (c.err != nullptr) {
            EXPECT_EQ(result.err, c.err);
        }
    }
}

// An answer is collected for its exchange's time limit after the 2-second
// wait: a printer that never ends its answers (one "more follows" packet of
// one byte a second) is read until then, not longer. The node is closed after
// the exchange, not left open until the end.
TEST_F(RunDriver, AnswersAreCollectedForTheirExchangesTimeLimit)
{
    const struct {
        std::vector<std::string> args;
        std::vector<int> limitSeconds;  // one per exchange
    } cases[] = {
        {{"-npa"}, {10}},
        // The old certificate is deleted, then a key is made: that takes longer.
        {{"-csr", "--cer-path=/nonexistent/csr.pem"}, {5, 10}},
    };
    const std::string packet("\xA5\x00\x02\x20\x41", 5);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.args[0]);
        script({});
        clock.microseconds = 0;
        long long exchangeStart = 0;  // seconds, when the exchange's request leaves
        for (const int limit : c.limitSeconds) {
            std::deque<Arrival>& endless = scripted.printer.answers.emplace_back();
            for (long long second = 3; second < 40; ++second)
                endless.push_back({(exchangeStart + second) * 1000000, packet});
            exchangeStart += 2 + limit;
        }
        const RunResult result = run(c.args);
        EXPECT_EQ(clock.now() - clock.start, exchangeStart);
        EXPECT_EQ(printer.writes.size(), c.limitSeconds.size());
        if (c.args[0] == "-npa") {
            EXPECT_NE(result.err.find("D [CVL] sendNPA response (10 bytes)\n"), std::string::npos) << result.err;
            EXPECT_EQ(printer.events, (Lines{"open", "close", "destroyed"}));
        }
    }
}

// A printer whose node fails with EIO ends the run at its first read: one
// line, no request sent again, no fixed wait beyond the first exchange's, and
// the status the mode gives a printer that does not answer at all.
TEST_F(RunDriver, PrinterGoneEndsTheRunAtOnce)
{
    const std::vector<std::string> commands[] = {
        {"-c", "--ssid=net"}, {"-s"}, {"-t"}, {"-r"}, {"-802s"}, {"-cer"}, {"--ssid=net"}, {"-rcerdefs"}};
    for (const auto& args : commands) {
        SCOPED_TRACE(args[0]);
        script({});
        const int silentStatus = run(args).status;
        script({});
        scripted.printer.hungUp = true;
        clock.microseconds = 0;
        const RunResult result = run(args);
        EXPECT_EQ(result.status, silentStatus);
        EXPECT_EQ(printer.writes.size(), 1u);
        EXPECT_LE(clock.now() - clock.start, 5);
        const std::string gone = "D [CVL] The printer is gone (Input/output error): no further requests are sent.\n";
        const size_t at = result.err.find(gone);
        EXPECT_NE(at, std::string::npos);
        EXPECT_EQ(result.err.find(gone, at + 1), std::string::npos);
        EXPECT_EQ(result.err.find("Failed to open"), std::string::npos);
    }
}

// With standard output closed by the caller, the next open (the printer's
// node) must not become standard output, and writing there must fail.
TEST(StandardStreams, ClosedOutputIsHeldSoThePrinterNeverTakesItsPlace)
{
    EXPECT_EXIT(
        {
            ::close(STDOUT_FILENO);
            holdClosedStandardDescriptors();
            const int printerNode = ::open("/dev/null", O_RDWR);
            const bool held = printerNode != STDOUT_FILENO && ::write(STDOUT_FILENO, "x", 1) == -1 && errno == EBADF;
            _exit(held ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
