// What a command came to on each printer of a run on several printers, and
// how they are shown all together in the order the printers were named.
#pragma once

#include "ctl/Failure.h"
#include "ctl/Report.h"

#include <optional>
#include <string>
#include <vector>

namespace corvelctl {

struct PrinterOutcome {
    std::string printer;  // the path the command ran on
    std::optional<std::string> serial;
    std::optional<Failure> failure;  // none: the command succeeded
    std::string shown;               // on success: the JSON element, or the human report
};

// The report of a run that succeeded, as a run on several printers shows it:
// the JSON element (the report with "serial" right after "printer") or the
// human text.
std::string shownReport(Report report, const std::optional<std::string>& serial, bool json);

// All the outcomes together: standard output, standard error and the exit
// status of the run.
struct MergedOutput {
    std::string out;
    std::string err;
    int status = 0;
};

// JSON: one line holding an array, one element per outcome in order; a
// failure's element is {"printer", "serial", "error", "exit"}. Human: each
// report under "PRINTER (serial SERIAL):", an empty line between them. Each
// failure is also one line "corvelctl: PRINTER: MESSAGE" on standard error.
// The status is the greatest of the failures', 0 when none failed.
MergedOutput mergeOutcomes(const std::vector<PrinterOutcome>& outcomes, bool json);

}  // namespace corvelctl
