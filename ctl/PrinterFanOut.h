// A command run on several printers at once: one child process per printer
// (the core and libusb-0.1 keep state that is not safe across threads), each
// telling its outcome to the parent over a pipe of its own.
#pragma once

#include "ctl/PrinterOutcome.h"
#include "ctl/PrinterSelector.h"
#include "ctl/Report.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace corvelctl {

// How one child process ended and what it wrote.
struct ChildEnd {
    std::string written;
    int waitStatus = 0;  // as waitpid gives it
    std::optional<Failure> notStarted;
};

// Runs `work(i)` for each i below `count`, each in a child process of its
// own, all at once. A child writes what `work` returns to its parent, calls
// `beforeExit` and ends with _exit (no destructor of the parent's objects, no
// flush of its buffers). The parent reads every child's pipe as the bytes
// come, so that no child waits on a full pipe, and returns when all have
// ended, in the order of i. Standard output and error are flushed first.
std::vector<ChildEnd> runInChildren(std::size_t count, const std::function<std::string(std::size_t)>& work,
                                    const std::function<void()>& beforeExit);

// The outcome a child's end means for `target`: what it wrote, or a failure
// (exit 70) when it was killed by a signal or ended without telling.
PrinterOutcome outcomeOf(const PrinterTarget& target, const ChildEnd& end);

// Runs `command` on every target at once, a target not found failing without
// a child. In each child the report is shown as `json` asks; `beforeExit`
// runs in the child at its end (to wipe a secret that no destructor will).
std::vector<PrinterOutcome> runOnEachPrinter(const std::vector<PrinterTarget>& targets, bool json,
                                             const std::function<Report(const PrinterTarget&)>& command,
                                             const std::function<void()>& beforeExit);

}  // namespace corvelctl
