#include "sim/process/ChildProcess.h"

#include <fcntl.h>
#include <semaphore.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "sim/process/SimSignals.h"

namespace corvelsim {

namespace {

const char* const kUmockdevPreload = "libumockdev-preload.so.0";
const char* const kDescriptorPreload = "libcorvelsim-preload.so";
const char* const kFaketimeCandidates[] = {
#ifdef CORVELSIM_FAKETIME_LIB
    CORVELSIM_FAKETIME_LIB,
#endif
    "/usr/lib/x86_64-linux-gnu/faketime/libfaketime.so.1",
    "/usr/lib/aarch64-linux-gnu/faketime/libfaketime.so.1",
    "/usr/lib/faketime/libfaketime.so.1",
};

std::string envOrEmpty(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

// The child's environment: ours, with each NAME in `changes` replaced.
std::vector<std::string> mergedEnvironment(const std::vector<std::string>& changes)
{
    std::vector<std::string> env;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const std::string name = text.substr(0, text.find('='));
        bool changed = false;
        for (const std::string& change : changes) changed = changed || change.rfind(name + "=", 0) == 0;
        if (!changed) env.push_back(text);
    }
    env.insert(env.end(), changes.begin(), changes.end());
    return env;
}

std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

// Reads the errno the child sends when its exec fails; 0 once the exec closed
// the pipe.
int execErrorFrom(int pipeEnd)
{
    int childErrno = 0;
    ssize_t got;
    do {
        got = read(pipeEnd, &childErrno, sizeof childErrno);
    } while (got < 0 && errno == EINTR);
    return got == ssize_t(sizeof childErrno) ? childErrno : 0;
}

}  // namespace

void removeSharedClock(pid_t command)
{
    const std::string pid = std::to_string(command);
    shm_unlink(("/faketime_shm_" + pid).c_str());
    sem_unlink(("/faketime_sem_" + pid).c_str());
}

std::string findFaketimeLibrary()
{
    for (const char* path : kFaketimeCandidates) {
        if (access(path, R_OK) == 0) return path;
    }
    return {};
}

std::string findDescriptorLibrary()
{
    char self[4096];
    const ssize_t length = readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0) return {};
    std::string dir(self, size_t(length));
    dir.erase(dir.rfind('/'));
    for (const std::string& path :
         {dir + "/" + kDescriptorPreload, dir + "/" CORVELSIM_PRELOAD_FROM_BIN "/" + kDescriptorPreload}) {
        if (access(path.c_str(), R_OK) == 0) return path;
    }
    return {};
}

std::vector<std::string> childEnvironment(const ChildSetup& setup, const std::string& ldPreload,
                                          const std::string& asanOptions, const std::string& faketimeLib,
                                          const std::string& descriptorLib)
{
    std::string preload = kUmockdevPreload;
    if (setup.speed > 1 && !faketimeLib.empty()) preload += ":" + faketimeLib;
    if (!ldPreload.empty()) preload += ":" + ldPreload;
    // Last, so that its constructor runs first.
    preload += ":" + descriptorLib;

    std::vector<std::string> env = {
        "LD_PRELOAD=" + preload,
        "UMOCKDEV_DIR=" + setup.umockdevDir,
        // The preload comes before the sanitizer runtime in a sanitized child.
        "ASAN_OPTIONS=" + (asanOptions.empty() ? "" : asanOptions + ":") + "verify_asan_link_order=0",
    };
    if (setup.speed > 1) {
        env.push_back("FAKETIME=+0 x" + std::to_string(setup.speed));
        env.push_back("FAKETIME_NO_CACHE=1");
    }
    return env;
}

ChildStart startChild(const ChildSetup& setup)
{
    ChildStart start;
    start.failStatus = 2;
    std::string faketimeLib;
    if (setup.speed > 1) {
        faketimeLib = findFaketimeLibrary();
        if (faketimeLib.empty()) {
            start.error = "--speed needs libfaketime (Debian package faketime)";
            return start;
        }
    }
    const std::string descriptorLib = findDescriptorLibrary();
    if (descriptorLib.empty()) {
        start.error = std::string("cannot find ") + kDescriptorPreload + ": corvelsim is not installed completely";
        return start;
    }
    if (descriptorLib.find_first_of(": ") != std::string::npos) {
        start.error = "cannot preload '" + descriptorLib + "': LD_PRELOAD takes no path with a blank or a colon";
        return start;
    }
    std::vector<std::string> argv = setup.argv;
    if (argv.empty()) {
        std::string shell = envOrEmpty("SHELL");
        argv.push_back(shell.empty() ? "/bin/sh" : shell);
    }
    std::vector<std::string> env = mergedEnvironment(
        childEnvironment(setup, envOrEmpty("LD_PRELOAD"), envOrEmpty("ASAN_OPTIONS"), faketimeLib, descriptorLib));
    // Everything the child needs is ready before the fork: between fork and
    // exec it only calls async-signal-safe functions.
    std::vector<char*> args = pointers(argv);
    std::vector<char*> envp = pointers(env);

    int execReport[2];
    if (pipe2(execReport, O_CLOEXEC) != 0) {
        start.error = std::string("cannot create a pipe: ") + std::strerror(errno);
        return start;
    }
    pid_t pid = fork();
    if (pid < 0) {
        start.error = std::string("cannot fork: ") + std::strerror(errno);
        close(execReport[0]);
        close(execReport[1]);
        return start;
    }
    if (pid == 0) {
        close(execReport[0]);
        giveBackSignals();
        execvpe(args[0], args.data(), envp.data());
        int execErrno = errno;
        ssize_t ignored = write(execReport[1], &execErrno, sizeof execErrno);
        (void)ignored;
        _exit(127);
    }
    close(execReport[1]);
    int execErrno = execErrorFrom(execReport[0]);
    close(execReport[0]);
    if (execErrno == 0) {
        start.pid = pid;
        return start;
    }
    while (waitpid(pid, nullptr, 0) < 0 && errno == EINTR) {}
    // As a shell does: 127 when there is no such file, 126 when it exists
    // but cannot be run.
    start.failStatus = execErrno == ENOENT ? 127 : 126;
    start.error = "cannot run '" + argv[0] + "': " + std::strerror(execErrno);
    return start;
}

int exitStatusOf(int waitStatus)
{
    if (WIFEXITED(waitStatus)) return WEXITSTATUS(waitStatus);
    if (WIFSIGNALED(waitStatus)) return 128 + WTERMSIG(waitStatus);
    return 1;
}

}  // namespace corvelsim
