// A command on several printers: the outcomes merged into one output and one
// exit status, and the child processes that run it, with real forks (no
// printer: the work given to each child stands for the command).
#include "ctl/PrinterFanOut.h"

#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <vector>

#include <unistd.h>

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

TEST(PrinterOutcome, ComesBackFromTheChildAsItWasSent)
{
    PrinterOutcome outcome;
    ASSERT_TRUE(decodeOutcome(encodeSuccess("{\"a\": 1}\n"), outcome));
    EXPECT_FALSE(outcome.failure);
    EXPECT_EQ(outcome.shown, "{\"a\": 1}\n");

    const std::string message = "no answer from the printer at 001:002 within 2 s; a busy printer...";
    ASSERT_TRUE(decodeOutcome(encodeFailure(Failure(ExitStatus::TemporaryFailure, message)), outcome));
    ASSERT_TRUE(outcome.failure);
    EXPECT_EQ(outcome.failure->status(), ExitStatus::TemporaryFailure);
    EXPECT_EQ(outcome.failure->message(), message);

    for (const std::string cut : {"", "F", "F75", "Fx5 message", "X{}"}) {
        PrinterOutcome partial;
        EXPECT_FALSE(decodeOutcome(cut, partial)) << cut;
    }
}

// More than a pipe holds, so that a parent that stopped reading would lose
// the end of it (or wait for ever).
std::string bigText(std::size_t index) { return std::string(300000 + index, static_cast<char>('a' + index)); }

TEST(PrinterFanOut, EveryChildIsReadWholeInTheOrderGiven)
{
    // The first child ends last: the order is the one given, not that of the ends.
    const auto work = [](std::size_t index) {
        ::usleep(static_cast<useconds_t>((4 - index) * 20000));
        return bigText(index);
    };
    const std::vector<ChildEnd> ends = runInChildren(5, work, [] {});
    ASSERT_EQ(ends.size(), 5u);
    for (std::size_t i = 0; i < ends.size(); ++i) {
        EXPECT_EQ(ends[i].written.size(), bigText(i).size()) << i;
        EXPECT_TRUE(ends[i].written == bigText(i)) << i;
        EXPECT_TRUE(WIFEXITED(ends[i].waitStatus) && WEXITSTATUS(ends[i].waitStatus) == 0) << i;
    }
}

TEST(PrinterFanOut, EachPrinterGivesItsOwnOutcome)
{
    std::vector<PrinterTarget> targets = {
        {"/dev/usb/lp0", "S0", std::nullopt},
        {"serial:Z9", std::nullopt, Failure(ExitStatus::Unavailable, "no attached printer matches")},
        {"/dev/usb/lp1", "S1", std::nullopt},
        {"/dev/usb/lp2", "S2", std::nullopt},
        {"/dev/usb/lp3", std::nullopt, std::nullopt},
    };
    // Each child that ends by itself wipes (here: tells this pipe), the parent never.
    int wipes[2];
    ASSERT_EQ(::pipe(wipes), 0);
    int parentsWipes = 0;
    const auto command = [](const PrinterTarget& target) -> Report {
        if (target.path == "/dev/usb/lp1") throw Failure(ExitStatus::Refused, "refused on lp1");
        if (target.path == "/dev/usb/lp2") ::raise(SIGKILL);
        if (target.path == "/dev/usb/lp3") ::_exit(0);  // gone without a word
        return Report().addText("printer", target.path).addBool("reset", true);
    };
    const std::vector<PrinterOutcome> outcomes = runOnEachPrinter(targets, true, command, [&] {
        ++parentsWipes;
        EXPECT_EQ(::write(wipes[1], "w", 1), 1);
    });
    ::close(wipes[1]);
    char told[8];
    EXPECT_EQ(::read(wipes[0], told, sizeof told), 2) << "lp0 and lp1 end by themselves";
    ::close(wipes[0]);
    EXPECT_EQ(parentsWipes, 0) << "the wipe runs in the children only";
    ASSERT_EQ(outcomes.size(), targets.size());
    for (std::size_t i = 0; i < targets.size(); ++i) {
        EXPECT_EQ(outcomes[i].printer, targets[i].path);
        EXPECT_EQ(outcomes[i].serial, targets[i].serial);
    }
    EXPECT_FALSE(outcomes[0].failure);
    EXPECT_EQ(outcomes[0].shown, R"({"printer": "/dev/usb/lp0", "serial": "S0", "reset": true})");
    const struct {
        std::size_t index;
        ExitStatus status;
        std::string message;
    } failures[] = {
        {1, ExitStatus::Unavailable, "no attached printer matches"},
        {2, ExitStatus::Refused, "refused on lp1"},
        {3, ExitStatus::Software, "internal error: the run on this printer was killed by signal 9 (Killed)"},
        {4, ExitStatus::Software, "internal error: the run on this printer ended without a result"},
    };
    for (const auto& f : failures) {
        ASSERT_TRUE(outcomes[f.index].failure) << f.index;
        EXPECT_EQ(outcomes[f.index].failure->status(), f.status) << f.index;
        EXPECT_EQ(outcomes[f.index].failure->message(), f.message) << f.index;
    }
    EXPECT_EQ(mergeOutcomes(outcomes, true).status, 70);
}

}  // namespace
