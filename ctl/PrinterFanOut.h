// A command run on several printers at once: one thread per printer. Each
// thread has a transport of its own and its own overrides of the core's
// services (both are kept per thread), so the printers share nothing but
// the command's options and its secret, which they only read.
#pragma once

#include "ctl/PrinterOutcome.h"
#include "ctl/PrinterSelector.h"
#include "ctl/Report.h"

#include <functional>
#include <vector>

namespace corvelctl {

// Runs `command` on every target at once, a target not found failing without
// being run; the report is shown as `json` asks. The outcomes come in the
// order of the targets. A thread that cannot be started (the system is out
// of them) has its printer run here, after the others have started: slower,
// never lost.
std::vector<PrinterOutcome> runOnEachPrinter(const std::vector<PrinterTarget>& targets, bool json,
                                             const std::function<Report(const PrinterTarget&)>& command);

}  // namespace corvelctl
