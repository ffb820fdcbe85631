// The second reading of the command line: the values of the options, and
// which options each command needs, allows and refuses together.
#pragma once

#include "ctl/CommandLine.h"
#include "ctl/CommandTokens.h"

namespace corvelctl {

// Throws Failure (exit 64) for a value that is not allowed, a missing option,
// options that do not go together, or an argument left over.
Invocation buildInvocation(RawCommandLine raw);

}  // namespace corvelctl
