// A wrong command line: exit 64, with a message that says what is wrong.
#pragma once

#include "ctl/Failure.h"

#include <string>
#include <string_view>

namespace corvelctl {

inline Failure usage(const std::string& message) { return Failure(ExitStatus::Usage, message); }

// A given value as messages show it: in double quotes.
inline std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

}  // namespace corvelctl
