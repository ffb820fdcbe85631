// Several printers from one command line: which options make them, how each
// is numbered, where it sits, and which files and faults it gets.
#include <gtest/gtest.h>

#include <cstdio>

#include "sim/process/PrinterPlan.h"
#include "sim/process/SimOptions.h"

namespace corvelsim {
namespace {

bool parse(std::vector<const char*> args, SimOptions& options, std::string& error)
{
    args.insert(args.begin(), "corvelsim");
    return parseOptions(int(args.size()), args.data(), options, error);
}

// Each printer as "K SERIAL lpN... BUS:DEV@PORT state log faults", or the
// options' error. Placements give the lp nodes, bus, device and port;
// "+d" marks a printer whose descriptors libusb reads, and its USB device's
// own number follows as "#DEV".
std::vector<std::string> printers(std::vector<const char*> args)
{
    SimOptions options;
    std::string error;
    if (!parse(std::move(args), options, error)) return {error};
    const std::vector<PrinterPlan> plans = planPrinters(options);
    const std::vector<std::vector<PrinterPlacement>> placed = placePlans(plans);
    std::vector<std::string> result;
    for (size_t i = 0; i < plans.size(); ++i) {
        const PrinterPlan& plan = plans[i];
        std::string line = std::to_string(plan.number) + " " + plan.serial();
        for (const PrinterPlacement& p : placed[i]) {
            line += " " + (p.lp == kNoLpNode ? std::string("-") : "lp" + std::to_string(p.lp)) + "/" + p.serial + " " +
                    std::to_string(p.bus) + ":" + std::to_string(p.device) + "@" + std::to_string(p.port) +
                    (p.descriptors.empty() ? "" : "+d");
        }
        if (plan.usb.bus != 0) line += " #" + std::to_string(plan.usb.device);
        line += " [" + plan.statePath + "] [" + plan.logPath + "]";
        if (plan.faults.silent) line += " silent";
        if (plan.faults.lateMs) line += " late=" + std::to_string(plan.faults.lateMs);
        if (!plan.usb.tracePath.empty()) line += " trace";
        result.push_back(line);
    }
    return result;
}

// Today's options make one printer as before; --printers N adds printers
// like it, each one step on, with its own files and faults.
TEST(PlanPrinters, MakeEachPrinterOneStepOnFromTheFirst)
{
    // clang-format off
    const struct {
        std::vector<const char*> args;
        std::vector<std::string> printers;
    } cases[] = {
        {{}, {"1 CVSIM0001 lp0/CVSIM0001 1:2@1 [] []"}},
        // Several lp nodes stay one printer (one state) with a device each.
        {{"--lp", "1", "--lp", "0", "--usb", "3:7", "--state", "s", "--log", "l", "--usb-trace", "t"},
         {"1 CVSIM0001 lp0/CVSIM0001 3:7@1+d lp1/CVSIM0001-lp1 3:8@2 #7 [s] [l] trace"}},
        {{"--printers", "3", "--usb", "001:004", "--lp", "2", "--state-dir", "D", "--log-dir=L", "--fault", "late=5",
          "--printer-fault", "2:silent", "--printer-fault", "3:late=9", "--usb-trace", "t"},
         {"1 CVSIM0001 lp2/CVSIM0001 1:4@1+d #4 [D/CVSIM0001.state] [L/CVSIM0001.log] late=5 trace",
          "2 CVSIM0002 lp3/CVSIM0002 1:5@2+d #5 [D/CVSIM0002.state] [L/CVSIM0002.log] silent late=5",
          "3 CVSIM0003 lp4/CVSIM0003 1:6@3+d #6 [D/CVSIM0003.state] [L/CVSIM0003.log] late=9"}},
        {{"--printers=2", "--no-lp", "--usb", "3:126", "--serial", "LAB"},
         {"1 LAB -/LAB 3:126@1+d #126 [] []", "2 LAB-2 -/LAB-2 3:127@2+d #127 [] []"}},
        // Without --usb: on bus 1 from device 2, no libusb node.
        {{"--printers", "2", "--serial", "A9", "--log-dir", "L"},
         {"1 A9 lp0/A9 1:2@1 [] [L/A9.log]", "2 A10 lp1/A10 1:3@2 [] [L/A10.log]"}},
        {{"--printers", "16", "--lp", "2"}, {"with --printers 16 from --lp 2 the last lp number passes 16"}},
    };
    // clang-format on
    for (const auto& c : cases) EXPECT_EQ(printers(c.args), c.printers) << (c.args.empty() ? "" : c.args[0]);
}

// What several printers cannot share or do not have is refused with a
// message that names the way out.
TEST(SimOptions, RefuseWhatSeveralPrintersCannotShare)
{
    // clang-format off
    const struct {
        std::vector<const char*> args;
        std::string error;
    } cases[] = {
        {{"--printers", "0"}, "--printers needs a count from 1 to 16"},
        {{"--printers", "17"}, "--printers needs a count from 1 to 16"},
        {{"--printers", "2", "--state", "s"},
         "--state FILE holds one printer's state; with --printers 2 use --state-dir DIR (DIR/SERIAL.state)"},
        {{"--log", "l", "--printers", "8"},
         "--log FILE is one printer's log; with --printers 8 use --log-dir DIR (DIR/SERIAL.log)"},
        {{"--state", "s", "--state-dir", "D"},
         "--state and --state-dir cannot go together: --state-dir keeps each printer's state in DIR/SERIAL.state"},
        {{"--log-dir", "D", "--log", "l"},
         "--log and --log-dir cannot go together: --log-dir writes each printer's log to DIR/SERIAL.log"},
        {{"--state-dir="}, "--state-dir needs a folder"},
        {{"--serial", "a/b", "--log-dir", "D"},
         "--state-dir and --log-dir name files after the serial, which cannot hold a '/'"},
        {{"--printers", "2", "--lp", "0", "--lp", "1"},
         "--lp is the first printer's node with --printers 2 (printer K has lp(N+K-1)): give it once"},
        {{"--printers", "8", "--lp", "10"}, "with --printers 8 from --lp 10 the last lp number passes 16"},
        {{"--printers", "4", "--usb", "1:125"}, "with --printers 4 from --usb device 125 the last device number passes 127"},
        {{"--printers", "8", "--printer-fault", "9:silent"},
         "--printer-fault 9:silent names printer 9, but there are 8 (--printers)"},
        {{"--printer-fault", "2:silent"}, "--printer-fault 2:silent names printer 2, but there is 1 (--printers)"},
        {{"--printer-fault", "0:silent"}, "--printer-fault needs K:NAME[=V], K a printer's number from 1 to 16"},
        {{"--printer-fault", "silent"}, "--printer-fault needs K:NAME[=V], K a printer's number from 1 to 16"},
        {{"--printer-fault", "1:loud"}, "unknown fault 'loud'"},
        {{"--printer-fault", "1:late=0"}, "bad value in fault 'late=0': it takes a number from 1 to 600000"},
    };
    // clang-format on
    for (const auto& c : cases) {
        SimOptions options;
        std::string error;
        EXPECT_FALSE(parse(c.args, options, error)) << c.error;
        EXPECT_EQ(error, c.error);
    }
}

// The trailing number counts on at its width, growing only when it must;
// a serial without one gets "-K".
TEST(NumberedSerial, CountsOnTheTrailingNumberAtItsWidth)
{
    // clang-format off
    const struct { const char* first; int number; const char* serial; } cases[] = {
        {"CVSIM0001", 1, "CVSIM0001"},
        {"CVSIM0001", 8, "CVSIM0008"},
        {"CVSIM0009", 2, "CVSIM0010"},
        {"CVSIM9999", 2, "CVSIM10000"},
        {"SN 42", 3, "SN 44"},
        {"0000", 16, "0015"},
        {"LAB", 1, "LAB"},
        {"LAB", 2, "LAB-2"},
        {"LAB-", 16, "LAB--16"},
        {"X1234567890123456789012", 2, "X1234567890123456789013"},
    };
    // clang-format on
    for (const auto& c : cases) EXPECT_EQ(numberedSerial(c.first, c.number), c.serial) << c.first << " " << c.number;
}

}  // namespace
}  // namespace corvelsim
