// Runs the command inside the simulated printer's world: the umockdev
// preload (and, when asked, faketime) in its environment.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace corvelsim {

struct ChildSetup {
    std::vector<std::string> argv;  // the command; empty: an interactive shell
    std::string umockdevDir;        // the testbed root
    int speed = 0;                  // faketime factor; 0 or 1: real time
};

// The environment changes for the child, as NAME=VALUE texts, given the
// current values of LD_PRELOAD and ASAN_OPTIONS ("" when unset).
std::vector<std::string> childEnvironment(const ChildSetup& setup, const std::string& ldPreload,
                                          const std::string& asanOptions, const std::string& faketimeLib);

// Where libfaketime lives; "" when it is not installed.
std::string findFaketimeLibrary();

// Starts the child; -1 and a message on failure.
pid_t startChild(const ChildSetup& setup, std::string& error);

// The exit status corvelsim ends with for a waitpid status: the child's exit
// code, or 128 + the signal that ended it.
int exitStatusOf(int waitStatus);

}  // namespace corvelsim
