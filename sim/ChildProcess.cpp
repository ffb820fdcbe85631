#include "sim/ChildProcess.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace corvelsim {

namespace {

const char* const kUmockdevPreload = "libumockdev-preload.so.0";
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

}  // namespace

std::string findFaketimeLibrary()
{
    for (const char* path : kFaketimeCandidates) {
        if (access(path, R_OK) == 0) return path;
    }
    return {};
}

std::vector<std::string> childEnvironment(const ChildSetup& setup, const std::string& ldPreload,
                                          const std::string& asanOptions, const std::string& faketimeLib)
{
    std::string preload = kUmockdevPreload;
    if (setup.speed > 1 && !faketimeLib.empty()) preload += ":" + faketimeLib;
    if (!ldPreload.empty()) preload += ":" + ldPreload;

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

pid_t startChild(const ChildSetup& setup, std::string& error)
{
    std::string faketimeLib;
    if (setup.speed > 1) {
        faketimeLib = findFaketimeLibrary();
        if (faketimeLib.empty()) {
            error = "--speed needs libfaketime (Debian package faketime)";
            return -1;
        }
    }
    std::vector<std::string> argv = setup.argv;
    if (argv.empty()) {
        std::string shell = envOrEmpty("SHELL");
        argv.push_back(shell.empty() ? "/bin/sh" : shell);
    }
    std::vector<std::string> env =
        childEnvironment(setup, envOrEmpty("LD_PRELOAD"), envOrEmpty("ASAN_OPTIONS"), faketimeLib);

    pid_t pid = fork();
    if (pid < 0) {
        error = std::string("fork failed: ") + std::strerror(errno);
        return -1;
    }
    if (pid == 0) {
        signal(SIGINT, SIG_DFL);
        signal(SIGQUIT, SIG_DFL);
        for (const std::string& entry : env) putenv(const_cast<char*>(entry.c_str()));
        std::vector<char*> args;
        for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
        args.push_back(nullptr);
        execvp(args[0], args.data());
        std::fprintf(stderr, "corvelsim: cannot run '%s': %s\n", args[0], std::strerror(errno));
        _exit(127);
    }
    return pid;
}

int exitStatusOf(int waitStatus)
{
    if (WIFEXITED(waitStatus)) return WEXITSTATUS(waitStatus);
    if (WIFSIGNALED(waitStatus)) return 128 + WTERMSIG(waitStatus);
    return 1;
}

}  // namespace corvelsim
