// What a new user may throw at corvelcfg, end to end against corvelsim: input
// files that never end, a printer unplugged in the middle of a run, and an
// output that cannot be written. Each gets one clear line and a defined status.
#include <gtest/gtest.h>

#include <cstdio>
#include <regex>
#include <fstream>
#include <string>
#include <vector>

#include "tests/e2e/SimRun.h"

namespace e2e {
namespace {

constexpr size_t kInputFileLimit = 1024 * 1024;

// A settings file of exactly `size` bytes: comment lines, then the SSID.
std::string settingsOfSize(size_t size, const std::string& ssid)
{
    const std::string last = "--ssid=" + ssid + "\n";
    std::string text;
    while (text.size() + 100 <= size - last.size()) text += std::string(99, '#') + "\n";
    text += "#" + std::string(size - last.size() - text.size() - 2, ' ') + "\n";
    return text + last;
}

// Files past the bound are refused before anything reaches the printer;
// pipes, FIFOs and a file right at the bound are read as files are: they
// fill the record (options after the path are ignored), and the path after
// the file's name is the printer's (only lp3 is served).
TEST(HostileInput, InputFilesAreReadWithinABound)
{
    SimDir dir;
    dir.write("at-limit.conf", settingsOfSize(kInputFileLimit, "Edge"));
    dir.write("past-limit.conf", settingsOfSize(kInputFileLimit + 1, "Over"));
    ASSERT_EQ(dir.read("at-limit.conf").size(), kInputFileLimit);
    const struct {
        const char* name;
        std::string script;
        int status;
        std::string err;   // standard error exactly; "" for a run that reaches the printer
        const char* ssid;  // sent in the settings request
    } cases[] = {
        {"zero settings", "exec \"$0\" -c -file /dev/zero", 2,
         "D [CVL] Cannot read settings file '/dev/zero': File too large\n", nullptr},
        {"past the limit", "exec \"$0\" -icer -file past-limit.conf", 2,
         "D [CVL] Cannot read settings file 'past-limit.conf': File too large\n", nullptr},
        {"at the limit", "exec \"$0\" -c -file at-limit.conf /dev/usb/lp3 --ssid=Ignored", 0, "", "Edge"},
        {"fifo", "mkfifo f && { printf -- '--ssid=Fifo\\n' >f & } && exec \"$0\" -c -file f /dev/usb/lp3", 0, "",
         "Fifo"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        const SimRun run = runSim(dir, {"--lp", "3"}, {"/bin/bash", "-c", c.script, CORVELCFG_PATH});  // $0: corvelcfg
        ASSERT_FALSE(run.timedOut);
        EXPECT_EQ(run.status, c.status) << run.err;
        if (c.ssid == nullptr) {
            EXPECT_EQ(run.err, c.err);
            EXPECT_TRUE(run.log.empty());  // nothing sent
            continue;
        }
        ASSERT_EQ(run.log.size(), 1) << run.err;
        EXPECT_EQ(logValue(run.log[0], "kind"), "settings");
        EXPECT_NE(logValue(run.log[0], "raw").find(toHex(std::string(c.ssid))), std::string::npos);
    }
}

// The printer goes away when request N+1 arrives (its node hangs up, or its
// USB device fails every call): the run reports it once, sends nothing more
// and ends with the status the mode gives a printer that does not answer.
TEST(HostileInput, PrinterUnpluggedDuringTheRunEndsIt)
{
    const struct {
        std::vector<std::string> args;
        int answered;  // requests answered before it goes
        int status;
    } cases[] = {
        {{"-s"}, 1, 1},  // the first answer held no SSID, the second attempt meets the hang-up
        {{"-ca", "--security=802.1x", "--ssid=Lab", "--802-auth-ext=PEAP"}, 2, 255},  // after both certificate lists
        {{"-npa", "-file", "read-ssid.hex", "/dev/usb/lp0"}, 0, 0},
        {{"-rcerdefs"}, 0, 1},
    };
    const std::string gone = "D [CVL] The printer is gone (No such device): no further requests are sent.\n";
    for (const bool usb : {false, true})
        for (const auto& c : cases) {
            SCOPED_TRACE(c.args[0] + " after " + std::to_string(c.answered) + (usb ? " over USB" : ""));
            SimDir dir;
            dir.write("read-ssid.hex", "A5 00 06 50 E0 D8 00 28 08\n");
            std::vector<std::string> simOptions = {"--fault", "vanish=" + std::to_string(c.answered)}, args = c.args;
            if (usb) simOptions.insert(simOptions.end(), {"--usb", "001:004"}), args.push_back("001:004");
            const SimRun run = runCorvelcfg(dir, simOptions, args);
            ASSERT_FALSE(run.timedOut);
            EXPECT_EQ(run.status, c.status);
            EXPECT_EQ(occurrences(run.err, gone), 1) << run.err;
            EXPECT_EQ(occurrences(run.err, "Failed to open"), 0);
            ASSERT_EQ(run.log.size(), size_t(c.answered) + 1);
            EXPECT_NE(run.log.back().find("\"faults\":[\"vanish\"]"), std::string::npos);
        }
}

// The status the README's table of modes gives for a printer that went away
// is the one the mode ends with: the last number before "went away" in the
// row's status cell.
TEST(HostileInput, ModeTableSaysHowARunEndsWhenThePrinterGoesAway)
{
    const struct {
        const char* row;  // the start of the mode's row
        std::vector<std::string> args;
    } cases[] = {
        {"| `-cer` |", {"-cer"}},
        {"| `-npa -file FILE` |", {"-npa", "-file", "read-ssid.hex"}},
    };
    SimDir dir;
    std::ifstream readme(std::string(PROJECT_SOURCE_DIR) + "/README.md");
    std::vector<std::string> rows;
    for (std::string line; std::getline(readme, line);) rows.push_back(line);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.row);
        std::string cell;
        for (const std::string& row : rows) {
            if (row.rfind(c.row, 0) == 0) cell = row.substr(row.rfind(" | ") + 3);
        }
        const size_t wentAway = cell.find("went away");
        ASSERT_NE(wentAway, std::string::npos) << cell;
        std::string stated;
        const std::string before = cell.substr(0, wentAway);
        const std::regex digits("[0-9]+");
        for (std::sregex_iterator number(before.begin(), before.end(), digits), end; number != end; ++number)
            stated = number->str();

        dir.write("read-ssid.hex", "A5 00 06 50 E0 D8 00 28 08\n");
        const SimRun run = runCorvelcfg(dir, {"--fault", "vanish=0"}, c.args);
        EXPECT_TRUE(holds(run.err, "D [CVL] The printer is gone")) << run.err;
        EXPECT_EQ(std::to_string(run.status), stated) << cell;
    }
}

// Output that cannot be written is a failure (74) with its reason, alone and
// under the simulator, in real time and under faketime (--speed 100): the
// libraries the simulator preloads open descriptors of their own (faketime's
// shared memory, umockdev's socket for each /dev file opened), and none of
// them may take the number of a standard descriptor the caller closed.
TEST(HostileInput, UnwritableOutputFailsTheRun)
{
    const struct {
        const char* script;  // $0 is corvelcfg; MODE -h alone, -rcerdefs under the simulator
        const char* reason;  // in the trace ("" when standard error is closed too)
        const char* out;     // on the shell's standard output
    } cases[] = {
        {"exec \"$0\" $MODE >/dev/full", "No space left on device", ""},
        {"exec \"$0\" $MODE >&-", "Bad file descriptor", ""},
        // The trace, too, has nowhere to go: the shell says how it ended.
        {"\"$0\" $MODE <&- >&- 2>&-; echo $?", "", "74\n"},
        {"(exec \"$0\" $MODE <&- >&- 2>&-); echo $?", "", "74\n"},
    };
    for (const char* speed : {"", "1", "100"}) {
        for (const auto& c : cases) {
            SCOPED_TRACE(std::string(c.script) + (*speed ? " under corvelsim --speed " : " alone") + speed);
            SimDir dir;
            const std::string script = std::string("MODE=") + (*speed ? "-rcerdefs; " : "-h; ") + c.script;
            const std::vector<std::string> command = {"/bin/bash", "-c", script, CORVELCFG_PATH};
            const SimRun run = *speed ? runSim(dir, {"--speed", speed}, command) : runCommand(dir, command);
            ASSERT_FALSE(run.timedOut);
            EXPECT_EQ(run.status, *c.out ? 0 : 74) << run.err;
            EXPECT_EQ(run.out, c.out);
            if (*c.reason) {
                EXPECT_EQ(occurrences(run.err, std::string("D [CVL] Cannot write the output: ") + c.reason + "\n"), 1)
                    << run.err;
            } else {
                EXPECT_EQ(run.err, "");
            }
            // Under the simulator the printer was read: the run got as far as its output.
            if (*speed) {
                EXPECT_EQ(run.log.size(), 1u) << run.err;
            }
        }
    }
}

}  // namespace
}  // namespace e2e
