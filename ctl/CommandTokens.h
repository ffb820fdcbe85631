// The first reading of the command line: the command, and each option with
// its text. An option must belong to the command and be given once; what its
// value means is read later (InvocationRules.h).
#pragma once

#include "ctl/CommandLine.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace corvelctl {

// Which command an option belongs to; Global ones go with every command.
enum class Scope { Global, Wifi, Provision, CertRequest };
enum class Takes { Nothing, Value, AttachedValueOnly };

struct OptionSpec {
    const char* name;  // without "--"
    char shortName;    // 0 when none
    Takes takes;
    Scope scope;
    bool repeatable = false;  // each value kept, in order (--printer)
};

// The option called --`name`, or nullptr.
const OptionSpec* findLongOption(std::string_view name);

// "-v", "-vj" and the like: short options run together.
bool isShortCluster(std::string_view token);

// What the tokens say before their values are read.
struct RawCommandLine {
    std::optional<Command> command;
    bool certWithoutSubcommand = false;
    std::vector<std::string> operands;  // after the command words
    std::map<std::string, std::string> values;
    std::map<std::string, std::vector<std::string>> repeatedValues;  // of the repeatable options
    std::set<std::string> flags;
    int verbosity = 0;
};

// Reads argv[1..argc-1]. Throws Failure (exit 64) for an unknown command or
// option, an option of another command, one given twice or a missing value.
RawCommandLine readCommandTokens(int argc, const char* const* argv);

}  // namespace corvelctl
