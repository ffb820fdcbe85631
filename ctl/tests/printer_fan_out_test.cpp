// A command on several printers: the outcomes merged into one output and one
// exit status, and the threads that run it (no printer: the work given to
// each stands for the command).
#include "ctl/PrinterFanOut.h"

#include <gtest/gtest.h>

#include "common/Console.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

using namespace corvelctl;

namespace {

PrinterOutcome succeeded(const std::string& printer, std::optional<std::string> serial, bool json)
{
    const Report report = Report().addText("printer", printer).addBool("reset", true);
    return {printer, serial, std::nullopt, shownReport(report, serial, json)};
}

PrinterOutcome failed(const std::string& printer, std::optional<std::string> serial, ExitStatus status)
{
    return {printer, serial, Failure(status, "it failed on " + printer), ""};
}

TEST(PrinterOutcome, MergesInOrderWithTheGreatestFailure)
{
    const auto lp0 = [](bool json) { return succeeded("/dev/usb/lp0", "S0", json); };
    const auto lp1 = [](bool json) { return succeeded("/dev/usb/lp1", std::nullopt, json); };
    const PrinterOutcome busy = failed("/dev/usb/lp2", "S2", ExitStatus::Unavailable);
    const PrinterOutcome late = failed("003:002", std::nullopt, ExitStatus::TemporaryFailure);
    const PrinterOutcome refused = failed("/dev/usb/lp3", "S3", ExitStatus::Refused);
    const struct {
        const char* name;
        std::vector<PrinterOutcome> outcomes;
        bool json;
        std::string out, err;
        int status;
    } cases[] = {
        {"allSucceed",
         {lp1(true), lp0(true)},
         true,
         "[{\"printer\": \"/dev/usb/lp1\", \"serial\": null, \"reset\": true}, "
         "{\"printer\": \"/dev/usb/lp0\", \"serial\": \"S0\", \"reset\": true}]\n",
         "",
         0},
        {"greatestFailureWinsWhereverItIs",
         {late, lp0(true), busy, refused},
         true,
         "[{\"printer\": \"003:002\", \"serial\": null, \"error\": \"it failed on 003:002\", \"exit\": 75}, "
         "{\"printer\": \"/dev/usb/lp0\", \"serial\": \"S0\", \"reset\": true}, "
         "{\"printer\": \"/dev/usb/lp2\", \"serial\": \"S2\", \"error\": \"it failed on /dev/usb/lp2\", \"exit\": 69}, "
         "{\"printer\": \"/dev/usb/lp3\", \"serial\": \"S3\", \"error\": \"it failed on /dev/usb/lp3\", \"exit\": "
         "1}]\n",
         "corvelctl: 003:002: it failed on 003:002\ncorvelctl: /dev/usb/lp2: it failed on /dev/usb/lp2\n"
         "corvelctl: /dev/usb/lp3: it failed on /dev/usb/lp3\n",
         75},
        {"humanHeadingsForReportsOnly",
         {lp0(false), busy, lp1(false)},
         false,
         "/dev/usb/lp0 (serial S0):\nprinter: /dev/usb/lp0\nreset:   yes\n\n"
         "/dev/usb/lp1:\nprinter: /dev/usb/lp1\nreset:   yes\n",
         "corvelctl: /dev/usb/lp2: it failed on /dev/usb/lp2\n",
         69},
        {"humanAllFailed", {refused}, false, "", "corvelctl: /dev/usb/lp3: it failed on /dev/usb/lp3\n", 1},
    };
    for (const auto& c : cases) {
        const MergedOutput merged = mergeOutcomes(c.outcomes, c.json);
        EXPECT_EQ(merged.out, c.out) << c.name;
        EXPECT_EQ(merged.err, c.err) << c.name;
        EXPECT_EQ(merged.status, c.status) << c.name;
    }
    PrinterOutcome hostile = succeeded("/dev/usb/lp0", std::string("S\x1b[2J"), false);
    EXPECT_EQ(mergeOutcomes({hostile}, false).out.substr(0, 35), "/dev/usb/lp0 (serial S\\x1b[2J):\npri");
}

// Holds every caller until `count` of them have come, so that work run one
// after another (not at once) shows as a wait that never ends: false after
// a bound no passing run comes near.
class Meeting {
public:
    explicit Meeting(std::size_t count) : m_Missing(count) {}
    bool allCame()
    {
        std::unique_lock<std::mutex> lock(m_Mutex);
        if (--m_Missing == 0) m_Changed.notify_all();
        return m_Changed.wait_for(lock, std::chrono::seconds(10), [&] { return m_Missing == 0; });
    }

private:
    std::mutex m_Mutex;
    std::condition_variable m_Changed;
    std::size_t m_Missing;
};

// What the core traces while a command runs, caught by the command's own
// console, as every printer command installs one.
class CatchingConsole : public Console {
public:
    void trace(std::string_view text) override { caught += text; }
    void user(std::string_view text) override { caught += text; }
    std::string caught;
};

TEST(PrinterFanOut, EveryPrinterRunsAtOnceWithItsOwnConsole)
{
    const std::vector<PrinterTarget> targets = {
        {"/dev/usb/lp0", "S0", std::nullopt},
        {"serial:Z9", std::nullopt, Failure(ExitStatus::Unavailable, "no attached printer matches")},
        {"/dev/usb/lp1", "S1", std::nullopt},
        {"/dev/usb/lp2", "S2", std::nullopt},
        {"/dev/usb/lp3", std::nullopt, std::nullopt},
        {"/dev/usb/lp4", "S4", std::nullopt},
    };
    Meeting meeting(5);  // the targets found
    std::atomic<int> runs{0};
    const auto command = [&](const PrinterTarget& target) -> Report {
        ++runs;
        CatchingConsole console;
        const Seam<Console>::Override installed(console);
        // Every console is installed before any is written to.
        if (!meeting.allCame()) throw Failure(ExitStatus::Software, "not run at once");
        traceF("on %s\n", target.path.c_str());
        if (console.caught != "on " + target.path + "\n") throw Failure(ExitStatus::Software, "caught " + console.caught);
        if (target.path == "/dev/usb/lp1") throw Failure(ExitStatus::Refused, "refused on lp1");
        if (target.path == "/dev/usb/lp2") throw std::length_error("vector too long");
        if (target.path == "/dev/usb/lp4") throw 42;
        return Report().addText("printer", target.path).addBool("reset", true);
    };
    const std::vector<PrinterOutcome> outcomes = runOnEachPrinter(targets, true, command);
    EXPECT_EQ(runs, 5) << "the printer not found is not run";
    ASSERT_EQ(outcomes.size(), targets.size());
    for (std::size_t i = 0; i < targets.size(); ++i) {
        EXPECT_EQ(outcomes[i].printer, targets[i].path);
        EXPECT_EQ(outcomes[i].serial, targets[i].serial);
    }
    const struct {
        std::size_t index;
        std::optional<ExitStatus> status;
        std::string text;  // the message of a failure, else what is shown
    } expected[] = {
        {0, std::nullopt, R"({"printer": "/dev/usb/lp0", "serial": "S0", "reset": true})"},
        {1, ExitStatus::Unavailable, "no attached printer matches"},
        {2, ExitStatus::Refused, "refused on lp1"},
        {3, ExitStatus::Software, "internal error: vector too long"},
        {4, std::nullopt, R"({"printer": "/dev/usb/lp3", "serial": null, "reset": true})"},
        {5, ExitStatus::Software, "internal error: an unknown exception"},
    };
    for (const auto& e : expected) {
        const PrinterOutcome& outcome = outcomes[e.index];
        ASSERT_EQ(outcome.failure.has_value(), e.status.has_value()) << e.index << ": " << (outcome.failure ? outcome.failure->message() : outcome.shown);
        EXPECT_EQ(outcome.failure ? outcome.failure->message() : outcome.shown, e.text) << e.index;
        if (e.status) {
            EXPECT_EQ(outcome.failure->status(), *e.status) << e.index;
        }
    }
    EXPECT_EQ(mergeOutcomes(outcomes, true).status, 70);
}

}  // namespace
