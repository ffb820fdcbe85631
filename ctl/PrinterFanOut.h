// A command run on several printers at once: one thread per printer. Each
// thread has a transport of its own and its own overrides of the core's
// services (both are kept per thread), so the printers share nothing but
// the command's options and its secret, which they only read.
#pragma once

#include "ctl/PrinterOutcome.h"
#include "ctl/PrinterSelector.h"
#include "ctl/Report.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace corvelctl {

// Runs `work(i)` for each i below `count`, all at once, and returns when
// every one has ended. A thread that cannot be started (the system is out of
// them) has its work run here, after the others have started: slower, never
// lost. `work` must not throw.
void runAtOnce(std::size_t count, const std::function<void(std::size_t)>& work);

// Runs `command` on every target at once, a target not found failing without
// being run; the report is shown as `json` asks. The outcomes come in the
// order of the targets.
std::vector<PrinterOutcome> runOnEachPrinter(const std::vector<PrinterTarget>& targets, bool json,
                                             const std::function<Report(const PrinterTarget&)>& command);

}  // namespace corvelctl
