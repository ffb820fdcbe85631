// The texts of --help and --version.
#pragma once

#include "ctl/CommandLine.h"

#include <string>

namespace corvelctl {

std::string programHelp();
std::string commandHelp(Command command);
// "cert" alone: its subcommands.
std::string certHelp();
std::string versionText();

}  // namespace corvelctl
