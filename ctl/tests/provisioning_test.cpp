// provision's own logic: waiting for the printer to appear, and which
// settings file applies to which serial.
#include "ctl/Provisioning.h"
#include "ctl/tests/TempFolder.h"
#include "tests/support/FakeClock.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

using namespace corvelctl;

namespace {

PrinterRecord printer(const std::string& serial, bool withNode)
{
    PrinterRecord record;
    if (withNode) record.nodes = {"/dev/usb/lp0"};
    record.bus = 1;
    record.device = 4;
    record.serial = serial;
    return record;
}

// The printer shows up after `absentCalls` discoveries without it, and its
// node after `nodelessCalls` more; another printer is there all along.
struct Arrival {
    int absentCalls, nodelessCalls;
    int calls = 0;
    std::vector<PrinterRecord> operator()()
    {
        std::vector<PrinterRecord> found = {printer("OTHER", true)};
        ++calls;
        if (calls > absentCalls) found.push_back(printer("X1", calls > absentCalls + nodelessCalls));
        return found;
    }
};

TEST(AwaitPrinter, WaitsSecondBySecondUntilThePrinterHasItsNode)
{
    const struct {
        const char* name;
        int absent, nodeless;
        int calls;           // discoveries made
        bool withNode;       // the printer X1 found at the end has its node
        long long waitedMs;  // on the fake clock
    } cases[] = {
        {"there already", 0, 0, 1, true, 0},
        {"comes after 3 s", 3, 0, 4, true, 3000},
        {"node after the device", 2, 4, 7, true, 6000},
        {"never its node", 0, 100, 11, false, 10000},
        {"never at all", 100, 0, 11, false, 10000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ScopedFakeClock fake;
        Arrival arrival{c.absent, c.nodeless};
        const std::vector<PrinterRecord> found =
            awaitPrinter(parsePrinterSelector("serial:X1"), std::ref(arrival), kPrinterAppearanceWait);
        EXPECT_EQ(arrival.calls, c.calls);
        EXPECT_EQ(fake.clock.monotonicMs(), c.waitedMs);
        bool x1WithNode = false;
        for (const PrinterRecord& record : found) x1WithNode |= record.serial == "X1" && !record.nodes.empty();
        EXPECT_EQ(x1WithNode, c.withNode);
    }
}

TEST(AwaitPrinter, WithoutASelectorAnyPrinterWithANodeWillDo)
{
    ScopedFakeClock fake;
    int calls = 0;
    const auto discover = [&] {
        ++calls;
        return calls < 3 ? std::vector<PrinterRecord>{} : std::vector<PrinterRecord>{printer("Y", true)};
    };
    EXPECT_EQ(awaitPrinter(std::nullopt, discover, kPrinterAppearanceWait).size(), 1u);
    EXPECT_EQ(calls, 3);
}

TEST(SettingsLookup, TheSerialsFileThenTheDefaultNeverAPathOutsideTheFolder)
{
    const struct {
        std::optional<std::string> serial;
        std::set<std::string> present;  // in /p
        std::string file;               // "" none
        std::vector<std::string> tried;
    } cases[] = {
        {"X1", {"/p/X1.conf", "/p/default.conf"}, "/p/X1.conf", {"/p/X1.conf", "/p/default.conf"}},
        {"X1", {"/p/default.conf"}, "/p/default.conf", {"/p/X1.conf", "/p/default.conf"}},
        {"X1", {}, "", {"/p/X1.conf", "/p/default.conf"}},
        {std::nullopt, {"/p/default.conf"}, "/p/default.conf", {"/p/default.conf"}},
        // A serial that would lead out of the folder or name a hidden file
        // has no file of its own.
        {"../../etc/passwd", {"/p/default.conf"}, "/p/default.conf", {"/p/default.conf"}},
        {"a/b", {}, "", {"/p/default.conf"}},
        {"..", {}, "", {"/p/default.conf"}},
        {".hidden", {}, "", {"/p/default.conf"}},
        {"", {}, "", {"/p/default.conf"}},
        {"A..B", {"/p/A..B.conf"}, "/p/A..B.conf", {"/p/A..B.conf", "/p/default.conf"}},
    };
    for (const auto& c : cases) {
        const auto exists = [&](const std::string& path) { return c.present.count(path) != 0; };
        for (const std::string dir : {"/p", "/p/"}) {
            const SettingsLookup lookup = findSettingsFile(dir, c.serial, exists);
            EXPECT_EQ(lookup.file.value_or(""), c.file) << c.serial.value_or("(none)") << " in " << dir;
            EXPECT_EQ(lookup.tried, c.tried) << c.serial.value_or("(none)");
        }
    }
}

TEST(SettingsLookup, ALinkOrAnUnsearchableFolderCountsAsThere)
{
    const TempFolder folder;
    symlink("/nonexistent", (folder.path + "/dangling.conf").c_str());
    folder.file("f.conf", "", 0600);
    EXPECT_TRUE(pathIsTaken(folder.path + "/dangling.conf"));
    EXPECT_TRUE(pathIsTaken(folder.path + "/f.conf"));
    EXPECT_FALSE(pathIsTaken(folder.path + "/none.conf"));
    EXPECT_FALSE(pathIsTaken(folder.path + "/f.conf/x"));
}

}  // namespace
