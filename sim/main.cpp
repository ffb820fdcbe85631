// corvelsim: a simulated printer on /dev/usb/lpN for corvelcfg and scripts.
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>

#include "sim/ChildProcess.h"
#include "sim/PrinterServer.h"
#include "sim/RequestLog.h"
#include "sim/SimOptions.h"
#include "sim/SharedStateFile.h"
#include "sim/Testbed.h"
#include "sim/UsbPrinterDevice.h"

using namespace corvelsim;

namespace {

volatile std::sig_atomic_t g_TerminateRequested = 0;

void onTerminate(int) { g_TerminateRequested = 1; }

// Keyboard signals reach the child through the terminal; corvelsim itself
// stays until the child is gone, so that it can clean up the testbed.
void installSignalHandlers()
{
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGQUIT, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    struct sigaction action {};
    action.sa_handler = onTerminate;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGHUP, &action, nullptr);
}

int fail(const std::string& message)
{
    std::fprintf(stderr, "corvelsim: %s\n", message.c_str());
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
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

    PrinterState state = factoryState(options.life);
    SharedStateFile stateFile;
    if (!options.statePath.empty() && !stateFile.open(options.statePath, state, error)) return fail(error);
    RequestLog log;
    if (!options.logPath.empty() && !log.open(options.logPath))
        return fail("cannot open the request log " + options.logPath);

    std::unique_ptr<Testbed> testbed = Testbed::create(options.lpNumbers, error);
    if (!testbed) return fail(error);
    std::unique_ptr<UsbPrinterDevice> usbDevice;
    if (options.usb.bus != 0) {
        usbDevice = UsbPrinterDevice::attach(testbed->umockdevTestbed(), options.usb, error);
        if (!usbDevice) return fail(error);
    }
    PrinterServer server(*testbed, state, options.faults, log,
                         options.statePath.empty() ? nullptr : &stateFile);
    if (usbDevice) server.addUsbPort(usbDevice->serverFd(), usbDevice->address());

    installSignalHandlers();
    ChildSetup setup{options.command, testbed->rootDir(), options.speed};
    pid_t child = startChild(setup, error);
    if (child < 0) return fail(error);

    int waitStatus = 0;
    bool forwarded = false;
    for (;;) {
        server.serveOnce(10);
        if (g_TerminateRequested && !forwarded) {
            kill(child, SIGTERM);
            forwarded = true;
        }
        pid_t done = waitpid(child, &waitStatus, WNOHANG);
        if (done == child || (done < 0 && errno != EINTR)) break;
    }
    server.finish();
    return exitStatusOf(waitStatus);
}
