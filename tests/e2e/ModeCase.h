// One run of corvelcfg under corvelsim described as data: what the printer
// holds and how it behaves, the arguments, and everything the run must show.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/e2e/ByteCompare.h"

namespace e2e {

struct ModeCase {
    const char* name;
    std::vector<std::string> args;
    std::vector<std::string> simOptions;
    std::string state;            // the printer's state file before the run ("" = factory settings)
    std::vector<Bytes> requests;  // every request the printer receives, in order
    std::string out;              // exact standard output
    int status;                   // exit status
    std::string errLine = {};     // a line standard error holds `errTimes` times ("" = not checked)
    int errTimes = 1;
    const char* input = nullptr;  // standard input as a pipe holding this, else /dev/null
};

inline void PrintTo(const ModeCase& mode, std::ostream* out) { *out << mode.name; }

// Runs the case and checks status, output, error line and request bytes.
void checkModeRun(const ModeCase& mode);

// Test names for INSTANTIATE_TEST_SUITE_P.
struct ModeCaseName {
    template <class ParamInfo>
    std::string operator()(const ParamInfo& info) const { return info.param.name; }
};

}  // namespace e2e
