#include "tests/e2e/SimRun.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace e2e {

const char* const kCorvelcfg = CORVELCFG_PATH;
const char* const kCorvelsim = CORVELSIM_PATH;

namespace {

// Well above what any accelerated run needs; a run past it is a hang.
constexpr auto kRunLimit = std::chrono::seconds(60);
const char* const kSpeed = "20";

// Standard input for the child: /dev/null, or a pipe already holding `input`
// (small enough for the pipe's buffer) whose writing end is closed.
int standardInput(const std::string* input)
{
    if (input == nullptr) return open("/dev/null", O_RDONLY);
    int ends[2];
    if (pipe(ends) != 0) return -1;
    bool written = write(ends[1], input->data(), input->size()) == static_cast<ssize_t>(input->size());
    close(ends[1]);
    if (!written) {
        close(ends[0]);
        return -1;
    }
    return ends[0];
}

int runProcess(const std::vector<std::string>& argv, const std::string& dir, const std::string* input,
               bool& timedOut)
{
    pid_t pid = fork();
    if (pid == 0) {
        if (chdir(dir.c_str()) != 0) _exit(126);
        int out = open("stdout.txt", O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = open("stderr.txt", O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int in = standardInput(input);
        if (out < 0 || err < 0 || in < 0) _exit(126);
        dup2(in, 0);
        dup2(out, 1);
        dup2(err, 2);
        std::vector<char*> args;
        for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
        args.push_back(nullptr);
        execv(args[0], args.data());
        _exit(127);
    }
    auto deadline = std::chrono::steady_clock::now() + kRunLimit;
    int status = 0;
    while (waitpid(pid, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            timedOut = true;
            kill(pid, SIGKILL);
            waitpid(pid, &status, 0);
            return -1;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    return 128 + WTERMSIG(status);
}

SimRun collect(const SimDir& dir, int status, bool timedOut)
{
    SimRun result;
    result.status = status;
    result.timedOut = timedOut;
    result.out = dir.read("stdout.txt");
    result.err = dir.read("stderr.txt");
    std::istringstream log(dir.read("requests.jsonl"));
    std::string line;
    while (std::getline(log, line)) {
        JsonValue entry;
        if (parseJson(line, entry)) result.log.push_back(std::move(entry));
        else result.badLogLines.push_back(line);
    }
    return result;
}

}  // namespace

SimDir::SimDir()
{
    const char* base = std::getenv("TMPDIR");
    std::string pattern = std::string(base && *base ? base : "/tmp") + "/corvel-e2e-XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    if (mkdtemp(buffer.data())) m_Path = buffer.data();
}

SimDir::~SimDir()
{
    if (m_Path.empty()) return;
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
}

void SimDir::write(const std::string& name, const std::string& content) const
{
    std::ofstream(file(name), std::ios::binary) << content;
}

std::string SimDir::read(const std::string& name) const
{
    std::ifstream in(file(name), std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

namespace {

SimRun runCommandWithInput(const SimDir& dir, const std::vector<std::string>& simOptions,
                           const std::vector<std::string>& command, const std::string* input)
{
    std::remove(dir.file("requests.jsonl").c_str());
    std::vector<std::string> argv = {kCorvelsim, "--speed", kSpeed, "--state", dir.file("state.txt"),
                                     "--log", dir.file("requests.jsonl")};
    argv.insert(argv.end(), simOptions.begin(), simOptions.end());
    argv.push_back("--");
    argv.insert(argv.end(), command.begin(), command.end());
    bool timedOut = false;
    int status = runProcess(argv, dir.path(), input, timedOut);
    return collect(dir, status, timedOut);
}

std::vector<std::string> corvelcfgCommand(const std::vector<std::string>& corvelcfgArgs)
{
    std::vector<std::string> command = {kCorvelcfg};
    command.insert(command.end(), corvelcfgArgs.begin(), corvelcfgArgs.end());
    return command;
}

}  // namespace

SimRun runCommandIn(const SimDir& dir, const std::vector<std::string>& simOptions,
                    const std::vector<std::string>& command)
{
    return runCommandWithInput(dir, simOptions, command, nullptr);
}

SimRun runIn(const SimDir& dir, const std::vector<std::string>& simOptions,
             const std::vector<std::string>& corvelcfgArgs)
{
    return runCommandIn(dir, simOptions, corvelcfgCommand(corvelcfgArgs));
}

SimRun runInWithInput(const SimDir& dir, const std::vector<std::string>& simOptions,
                      const std::vector<std::string>& corvelcfgArgs, const std::string& input)
{
    return runCommandWithInput(dir, simOptions, corvelcfgCommand(corvelcfgArgs), &input);
}

SimRun run(const std::vector<std::string>& simOptions, const std::vector<std::string>& corvelcfgArgs,
           const std::map<std::string, std::string>& files)
{
    SimDir dir;
    for (const auto& [name, content] : files) dir.write(name, content);
    return runIn(dir, simOptions, corvelcfgArgs);
}

}  // namespace e2e
