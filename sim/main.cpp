// corvelsim: simulated printers on /dev/usb/lpN (and/or the USB bus, for
// libusb) for corvelcfg and scripts.
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sim/devices/PrinterServer.h"
#include "sim/devices/ServedPrinter.h"
#include "sim/devices/Testbed.h"
#include "sim/process/ChildProcess.h"
#include "sim/process/PrinterPlan.h"
#include "sim/process/SimOptions.h"
#include "sim/process/SimSignals.h"
#include "sim/process/StandardDescriptors.h"

using namespace corvelsim;

namespace {

volatile std::sig_atomic_t g_TerminateRequested = 0;

void onTerminate(int) { g_TerminateRequested = 1; }

// Serves the printers until the child ends; returns its wait status. What the
// child left of faketime's shared clock goes before it is reaped. A SIGTERM
// or SIGHUP to corvelsim goes on to the child as SIGTERM, and a child still
// there `killAfterMs` real milliseconds later (one that ignores SIGTERM, or
// is stuck where it cannot take it) is killed.
int serveUntilChildEnds(PrinterServer& server, pid_t child, int killAfterMs, bool fakeTime)
{
    using Clock = std::chrono::steady_clock;
    std::optional<Clock::time_point> killAt;
    bool killed = false;
    int waitStatus = 0;
    for (;;) {
        server.serveOnce(10);
        if (g_TerminateRequested && !killAt) {
            kill(child, SIGTERM);
            killAt = Clock::now() + std::chrono::milliseconds(killAfterMs);
        }
        if (killAt && !killed && Clock::now() >= *killAt) {
            std::fprintf(stderr, "corvelsim: the command did not end within %d ms of SIGTERM; killing it\n",
                         killAfterMs);
            kill(child, SIGKILL);
            killed = true;
        }
        siginfo_t ended{};
        if (waitid(P_PID, child, &ended, WEXITED | WNOHANG | WNOWAIT) < 0) {
            if (errno == EINTR) continue;
            return waitStatus;
        }
        if (ended.si_pid != child) continue;
        if (fakeTime) removeSharedClock(child);
        while (waitpid(child, &waitStatus, 0) < 0 && errno == EINTR) {}
        return waitStatus;
    }
}

int fail(const std::string& message)
{
    std::fprintf(stderr, "corvelsim: %s\n", message.c_str());
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
    // Before anything opens a file: a closed standard descriptor would
    // otherwise become the state file's lock, the log or a testbed socket,
    // and corvelsim's own messages would go there.
    corvelsimHoldClosedStandardDescriptors();
    SimOptions options;
    std::string error;
    if (!parseOptions(argc, argv, options, error)) {
        std::fprintf(stderr, "corvelsim: %s (see corvelsim --help)\n", error.c_str());
        return 2;
    }
    if (options.help) {
        std::fputs(helpText().c_str(), stdout);
        return 0;
    }
    if (options.version) {
        std::fputs(versionText().c_str(), stdout);
        return 0;
    }

    // Every printer's files first: a state file refused leaves no testbed behind.
    const std::vector<PrinterPlan> plans = planPrinters(options);
    std::vector<std::unique_ptr<ServedPrinter>> printers;
    for (const PrinterPlan& plan : plans) {
        printers.push_back(std::make_unique<ServedPrinter>(plan, options.life));
        if (!printers.back()->openFiles(error)) return fail(error);
    }

    std::unique_ptr<Testbed> testbed = Testbed::create(error);
    if (!testbed) return fail(error);
    const std::vector<std::vector<PrinterPlacement>> placed = placePlans(plans);
    std::vector<PrinterPlacement> placements;
    for (size_t i = 0; i < printers.size(); ++i) {
        if (!printers[i]->attachUsb(testbed->umockdevTestbed(), error)) return fail(error);
        placements.insert(placements.end(), placed[i].begin(), placed[i].end());
    }
    if (!testbed->addPrinters(placements, options.usb.identity, error)) return fail(error);
    for (size_t i = 0; i < printers.size(); ++i) printers[i]->addPorts(*testbed, placed[i]);
    PrinterServer server(*testbed, std::move(printers));

    takeOverSignals(onTerminate);
    ChildSetup setup{options.command, testbed->rootDir(), options.speed};
    ChildStart child = startChild(setup);
    if (child.pid < 0) {
        std::fprintf(stderr, "corvelsim: %s\n", child.error.c_str());
        return child.failStatus;
    }
    int waitStatus = serveUntilChildEnds(server, child.pid, options.killAfterMs, options.speed > 1);
    server.finish();
    return exitStatusOf(waitStatus);
}
