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
// current values of LD_PRELOAD and ASAN_OPTIONS ("" when unset) and the
// libraries to preload.
std::vector<std::string> childEnvironment(const ChildSetup& setup, const std::string& ldPreload,
                                          const std::string& asanOptions, const std::string& faketimeLib,
                                          const std::string& descriptorLib);

// Where libfaketime lives; "" when it is not installed.
std::string findFaketimeLibrary();

// Where corvelsim's own preload library lives: beside the corvelsim program
// (the build tree) or where it is installed relative to it; "" when neither.
std::string findDescriptorLibrary();

// What became of starting the command.
struct ChildStart {
    pid_t pid = -1;      // the running command; -1 when it did not start
    int failStatus = 0;  // when it did not: corvelsim's exit status, 127 for a
                         // command not found, 126 for one that cannot be
                         // executed, 2 when corvelsim itself failed
    std::string error;   // and why
};

// Starts the child and returns once it runs the command (or could not).
ChildStart startChild(const ChildSetup& setup);

// libfaketime keeps the clock the command's processes share in two files of
// /dev/shm, faketime_shm_PID and sem.faketime_sem_PID, named after the first
// process it runs in: the command itself. It leaves them behind when that
// process execs another program or ends. Removes them; call it once the
// command has ended but before it is reaped, while no other process can
// have its pid.
void removeSharedClock(pid_t command);

// The exit status corvelsim ends with for a waitpid status: the child's exit
// code, or 128 + the signal that ended it.
int exitStatusOf(int waitStatus);

}  // namespace corvelsim
