// What every printer command of corvelctl shares: the core kept quiet, and
// the report that starts with the printer's path.
#pragma once

#include <string>
#include <string_view>

#include "common/Console.h"
#include "ctl/Report.h"

namespace corvelctl {

// The core's own trace lines stay out of corvelctl's output.
class SilentConsole : public Console {
public:
    void trace(std::string_view) override {}
    void user(std::string_view) override {}
};

// Every printer command runs with the core silenced.
struct QuietCore {
    SilentConsole console;
    Seam<Console>::Override installed{console};
};

inline Report printerReport(const std::string& path) { return Report().addText("printer", path); }

}  // namespace corvelctl
