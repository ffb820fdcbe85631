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

namespace {

// Well above what any accelerated run needs; a run past it is a hang.
constexpr auto kRunLimit = std::chrono::seconds(60);

int runProcess(const std::vector<std::string>& argv, const SimDir& dir, const char* input, bool& timedOut)
{
    pid_t pid = fork();
    if (pid == 0) {
        int out = open(dir.file("stdout.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int err = open(dir.file("stderr.txt").c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        int in = open(input ? dir.file("stdin.txt").c_str() : "/dev/null", O_RDONLY);
        if (chdir(dir.file("").c_str()) != 0 || out < 0 || err < 0 || in < 0) _exit(126);
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
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}  // namespace

SimDir::SimDir()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "corvel-e2e-XXXXXX").string();
    if (mkdtemp(pattern.data())) m_Path = pattern;
}

SimDir::~SimDir()
{
    std::error_code ignored;
    if (!m_Path.empty()) std::filesystem::remove_all(m_Path, ignored);
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

SimRun runCommand(const SimDir& dir, const std::vector<std::string>& argv, const char* input)
{
    if (input != nullptr) dir.write("stdin.txt", input);
    SimRun result;
    result.status = runProcess(argv, dir, input, result.timedOut);
    result.out = dir.read("stdout.txt");
    result.err = dir.read("stderr.txt");
    return result;
}

SimRun runSim(const SimDir& dir, const std::vector<std::string>& simOptions, const std::vector<std::string>& command,
              const char* input)
{
    std::remove(dir.file("requests.jsonl").c_str());
    std::vector<std::string> argv = {
        CORVELSIM_PATH, "--speed", "20", "--state", dir.file("state.txt"), "--log", dir.file("requests.jsonl")};
    argv.insert(argv.end(), simOptions.begin(), simOptions.end());
    argv.push_back("--");
    argv.insert(argv.end(), command.begin(), command.end());
    SimRun result = runCommand(dir, argv, input);
    std::istringstream log(dir.read("requests.jsonl"));
    for (std::string line; std::getline(log, line);) result.log.push_back(line);
    return result;
}

std::string logValue(const std::string& line, const std::string& key)
{
    size_t at = line.find("\"" + key + "\":");
    if (at == std::string::npos) return "";
    at += key.size() + 3;
    if (line[at] != '"') return line.substr(at, line.find_first_of(",}", at) - at);
    size_t end = at + 1;
    while (end < line.size() && line[end] != '"') end += line[end] == '\\' ? 2 : 1;
    return line.substr(at + 1, end - at - 1);
}

std::vector<std::string> words(const std::string& line)
{
    std::istringstream stream(line);
    std::vector<std::string> result;
    for (std::string word; stream >> word;) result.push_back(word);
    return result;
}

int occurrences(const std::string& text, const std::string& part)
{
    int count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
    return count;
}

SimRun runCorvelcfg(const SimDir& dir, const std::vector<std::string>& simOptions, const std::vector<std::string>& args,
                    const char* input)
{
    std::vector<std::string> command = {CORVELCFG_PATH};
    command.insert(command.end(), args.begin(), args.end());
    return runSim(dir, simOptions, command, input);
}

SimRun runCorvelctl(const SimDir& dir, const std::vector<std::string>& simOptions, const std::vector<std::string>& args,
                    const char* input)
{
    // corvelctl has no fixed waits: in real time, so that its deadlines
    // (--timeout) do not pass 20 times faster on a busy machine.
    std::vector<std::string> options = {"--speed", "1"};
    options.insert(options.end(), simOptions.begin(), simOptions.end());
    std::vector<std::string> command = {CORVELCTL_PATH};
    command.insert(command.end(), args.begin(), args.end());
    return runSim(dir, options, command, input);
}

std::vector<std::string> rawRequests(const SimRun& run)
{
    std::vector<std::string> raws;
    for (const std::string& line : run.log) raws.push_back(logValue(line, "raw"));
    return raws;
}

void writeSecretFile(const SimDir& dir, const std::string& secret)
{
    dir.write("secret.txt", secret);
    std::filesystem::permissions(dir.file("secret.txt"),
                                 std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

int runShell(const SimDir& dir, const std::string& command)
{
    const int status = std::system(("cd '" + dir.file("") + "' && { " + command + "; } >/dev/null 2>&1").c_str());
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
}

}  // namespace e2e
