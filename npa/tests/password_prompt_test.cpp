// The hidden password prompt on pipes, files and a pseudo-terminal, including
// the signals a user sends while it waits.
#include "npa/PasswordPrompt.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

const std::string kPrompt = "Please provide the password:";
constexpr int kPromptSignals[] = {SIGINT, SIGHUP, SIGQUIT, SIGTERM, SIGTSTP, SIGTTIN, SIGTTOU};
constexpr auto kPatience = std::chrono::seconds(10);

// Runs the prompt on `inputFd` with its output in memory; returns the password.
std::string promptCapturingOutput(int inputFd, std::string& output) {
    char* buffer = nullptr;
    std::size_t size = 0;
    std::FILE* stream = open_memstream(&buffer, &size);
    std::string password = promptForPassword(inputFd, stream);
    std::fclose(stream);
    output.assign(buffer, size);
    std::free(buffer);
    return password;
}

// ---------------------------------------------------------------- not a terminal

struct PipeCase {
    const char* name;
    std::string input;
    std::string expected;
};

TEST(PasswordPromptTest, ReadsOneLineFromAPipeWithoutErrorText) {
    const PipeCase cases[] = {
        {"newline", "secret\n", "secret"},
        {"end of input without newline", "secret", "secret"},
        {"nothing", "", ""},
        {"empty line", "\n", ""},
        {"stops at the first newline", "first\nsecond\n", "first"},
        {"keeps carriage return and blanks", "two words\r\n", "two words\r"},
        {"keeps a zero byte", std::string("a\0b\n", 4), std::string("a\0b", 3)},
    };
    for (const PipeCase& c : cases) {
        SCOPED_TRACE(c.name);
        int fds[2];
        ASSERT_EQ(pipe(fds), 0);
        ASSERT_EQ(write(fds[1], c.input.data(), c.input.size()),
                  static_cast<ssize_t>(c.input.size()));
        close(fds[1]);

        std::string output;
        testing::internal::CaptureStderr();
        const std::string password = promptCapturingOutput(fds[0], output);
        const std::string errors = testing::internal::GetCapturedStderr();
        close(fds[0]);

        EXPECT_EQ(password, c.expected);
        EXPECT_EQ(output, kPrompt + "\n\n");
        EXPECT_EQ(errors, "");
    }
}

TEST(PasswordPromptTest, LeavesWhatFollowsTheNewlineUnread) {
    std::FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    const std::string content = "from file\nrest";
    ASSERT_EQ(std::fwrite(content.data(), 1, content.size(), file), content.size());
    std::fflush(file);
    const int fd = fileno(file);
    ASSERT_EQ(lseek(fd, 0, SEEK_SET), 0);

    std::string output;
    EXPECT_EQ(promptCapturingOutput(fd, output), "from file");
    EXPECT_EQ(lseek(fd, 0, SEEK_CUR), static_cast<off_t>(content.find('\n') + 1));
    std::fclose(file);
}

TEST(PasswordPromptTest, UnreadableInputGivesAnEmptyPassword) {
    const int devNull = open("/dev/null", O_RDONLY);
    const int directory = open("/", O_RDONLY | O_DIRECTORY);  // read() fails with EISDIR
    ASSERT_GE(devNull, 0);
    ASSERT_GE(directory, 0);
    const struct {
        const char* name;
        int fd;
    } cases[] = {{"/dev/null", devNull}, {"directory", directory}, {"closed descriptor", -1}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string output;
        EXPECT_EQ(promptCapturingOutput(c.fd, output), "");
        EXPECT_EQ(output, kPrompt + "\n\n");
    }
    close(devNull);
    close(directory);
}

void customHandler(int) {}

TEST(PasswordPromptTest, PutsBackTheCallersSignalHandlingAndMask) {
    struct sigaction custom {};
    custom.sa_handler = customHandler;
    struct sigaction ignore {};
    ignore.sa_handler = SIG_IGN;
    struct sigaction oldInt {}, oldTerm {}, oldTstp {};
    sigaction(SIGINT, &custom, &oldInt);
    sigaction(SIGTERM, &ignore, &oldTerm);
    sigaction(SIGTSTP, nullptr, &oldTstp);
    sigset_t hup, callerMask;
    sigemptyset(&hup);
    sigaddset(&hup, SIGHUP);
    sigprocmask(SIG_BLOCK, &hup, &callerMask);
    sigprocmask(SIG_SETMASK, nullptr, &callerMask);

    const int devNull = open("/dev/null", O_RDONLY);
    std::string output;
    promptCapturingOutput(devNull, output);
    close(devNull);

    struct sigaction now {};
    sigaction(SIGINT, nullptr, &now);
    EXPECT_EQ(now.sa_handler, customHandler);
    sigaction(SIGTERM, nullptr, &now);
    EXPECT_EQ(now.sa_handler, SIG_IGN);
    sigaction(SIGTSTP, nullptr, &now);
    EXPECT_EQ(now.sa_handler, oldTstp.sa_handler);
    sigset_t mask;
    sigprocmask(SIG_SETMASK, nullptr, &mask);
    for (int signalNumber : kPromptSignals) {
        EXPECT_EQ(sigismember(&mask, signalNumber), sigismember(&callerMask, signalNumber))
            << "signal " << signalNumber;
    }

    sigprocmask(SIG_UNBLOCK, &hup, nullptr);
    sigaction(SIGINT, &oldInt, nullptr);
    sigaction(SIGTERM, &oldTerm, nullptr);
}

// ---------------------------------------------------------------- on a terminal

using Clock = std::chrono::steady_clock;

// A prompt running in a child process whose input and output are a pty.
class PtyPrompt {
public:
    // `ignoreSignal` (0 for none) is ignored by the child before prompting.
    explicit PtyPrompt(int ignoreSignal = 0) {
        if (openpty(&master_, &slave_, nullptr, nullptr, nullptr) != 0) return;
        tcgetattr(slave_, &before_);
        int result[2];
        if (pipe(result) != 0) return;
        child_ = fork();
        if (child_ == 0) runChild(result[1], ignoreSignal);
        resultFd_ = result[0];
        close(result[1]);
    }

    ~PtyPrompt() {
        if (child_ > 0 && !reaped_) {
            kill(child_, SIGKILL);
            waitpid(child_, nullptr, 0);
        }
        for (int fd : {master_, slave_, resultFd_}) {
            if (fd >= 0) close(fd);
        }
    }

    bool started() const { return child_ > 0; }

    // Collects what the child wrote to the terminal until `text` shows up.
    bool waitForOutput(const std::string& text) {
        const auto deadline = Clock::now() + kPatience;
        while (screen_.find(text) == std::string::npos) {
            if (Clock::now() > deadline) return false;
            readMaster(100);
        }
        return true;
    }

    void type(const std::string& keys) const {
        ASSERT_EQ(write(master_, keys.data(), keys.size()), static_cast<ssize_t>(keys.size()));
    }

    bool echoIsOn() const {
        termios now{};
        tcgetattr(slave_, &now);
        return (now.c_lflag & ECHO) != 0;
    }

    tcflag_t localModes() const {
        termios now{};
        tcgetattr(slave_, &now);
        return now.c_lflag;
    }

    tcflag_t localModesBefore() const { return before_.c_lflag; }

    bool waitForEcho(bool on) const {
        const auto deadline = Clock::now() + kPatience;
        while (echoIsOn() != on) {
            if (Clock::now() > deadline) return false;
            poll(nullptr, 0, 5);
        }
        return true;
    }

    // Waits for the child to end (or, with WUNTRACED, to stop); false on timeout.
    bool waitForChild(int& status, int options = 0) {
        const auto deadline = Clock::now() + kPatience;
        for (;;) {
            const pid_t done = waitpid(child_, &status, options | WNOHANG);
            if (done == child_) {
                reaped_ = !WIFSTOPPED(status);
                return true;
            }
            if (done < 0 || Clock::now() > deadline) return false;
            poll(nullptr, 0, 5);
        }
    }

    // The password the child returned (read until the child closes the pipe).
    std::string password() const {
        std::string text;
        const auto deadline = Clock::now() + kPatience;
        while (Clock::now() < deadline) {
            pollfd p{resultFd_, POLLIN, 0};
            if (poll(&p, 1, 100) <= 0) continue;
            char buffer[256];
            const ssize_t n = read(resultFd_, buffer, sizeof buffer);
            if (n <= 0) break;
            text.append(buffer, static_cast<std::size_t>(n));
        }
        return text;
    }

    // Everything the child wrote to the terminal so far.
    const std::string& screen() {
        while (readMaster(0)) {
        }
        return screen_;
    }

    pid_t pid() const { return child_; }

private:
    [[noreturn]] void runChild(int resultFd, int ignoreSignal) {
        alarm(20);                // a broken prompt must not hang the suite
        setpgid(0, 0);            // a group with a parent outside it may be stopped
        rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        for (int signalNumber : kPromptSignals) std::signal(signalNumber, SIG_DFL);
        if (ignoreSignal != 0) std::signal(ignoreSignal, SIG_IGN);
        close(master_);
        std::FILE* output = fdopen(dup(slave_), "w");
        const std::string password = promptForPassword(slave_, output);
        const bool written =
            write(resultFd, password.data(), password.size()) == static_cast<ssize_t>(password.size());
        _exit(written ? 0 : 3);
    }

    bool readMaster(int timeoutMs) {
        pollfd p{master_, POLLIN, 0};
        if (poll(&p, 1, timeoutMs) <= 0) return false;
        char buffer[256];
        const ssize_t n = read(master_, buffer, sizeof buffer);
        if (n <= 0) return false;
        screen_.append(buffer, static_cast<std::size_t>(n));
        return true;
    }

    int master_ = -1;
    int slave_ = -1;
    int resultFd_ = -1;
    pid_t child_ = -1;
    bool reaped_ = false;
    termios before_{};
    std::string screen_;
};

TEST(PasswordPromptTerminalTest, HidesTypedCharactersAndRestoresTheTerminal) {
    PtyPrompt prompt;
    ASSERT_TRUE(prompt.started());
    ASSERT_TRUE(prompt.waitForOutput(kPrompt));
    EXPECT_FALSE(prompt.echoIsOn());

    prompt.type("s3cr3t\n");
    EXPECT_EQ(prompt.password(), "s3cr3t");
    int status = 0;
    ASSERT_TRUE(prompt.waitForChild(status));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);

    const std::string& screen = prompt.screen();
    EXPECT_NE(screen.find(kPrompt), std::string::npos);
    EXPECT_EQ(screen.find("s3cr3t"), std::string::npos) << screen;
    EXPECT_EQ(prompt.localModes(), prompt.localModesBefore());
}

TEST(PasswordPromptTerminalTest, EndOfInputKeyEndsThePassword) {
    PtyPrompt prompt;
    ASSERT_TRUE(prompt.started());
    ASSERT_TRUE(prompt.waitForOutput(kPrompt));
    prompt.type("abc\x04\x04");  // the first Ctrl-D hands over "abc", the second ends the input
    EXPECT_EQ(prompt.password(), "abc");
    int status = 0;
    ASSERT_TRUE(prompt.waitForChild(status));
    EXPECT_TRUE(prompt.echoIsOn());
}

TEST(PasswordPromptTerminalTest, TerminatingSignalRestoresEchoThenKills) {
    for (int signalNumber : {SIGINT, SIGHUP, SIGQUIT, SIGTERM}) {
        SCOPED_TRACE(strsignal(signalNumber));
        PtyPrompt prompt;
        ASSERT_TRUE(prompt.started());
        ASSERT_TRUE(prompt.waitForOutput(kPrompt));
        ASSERT_FALSE(prompt.echoIsOn());

        kill(prompt.pid(), signalNumber);
        int status = 0;
        ASSERT_TRUE(prompt.waitForChild(status));
        ASSERT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), signalNumber);
        EXPECT_TRUE(prompt.echoIsOn());
    }
}

TEST(PasswordPromptTerminalTest, IgnoredSignalDoesNotEndThePrompt) {
    PtyPrompt prompt(SIGINT);
    ASSERT_TRUE(prompt.started());
    ASSERT_TRUE(prompt.waitForOutput(kPrompt));
    kill(prompt.pid(), SIGINT);
    prompt.type("still here\n");
    EXPECT_EQ(prompt.password(), "still here");
    int status = 0;
    ASSERT_TRUE(prompt.waitForChild(status));
    EXPECT_TRUE(WIFEXITED(status));
}

TEST(PasswordPromptTerminalTest, StopShowsEchoAndContinueHidesItAgain) {
    for (int stopSignal : {SIGTSTP, SIGTTIN, SIGTTOU}) {
        SCOPED_TRACE(strsignal(stopSignal));
        PtyPrompt prompt;
        ASSERT_TRUE(prompt.started());
        ASSERT_TRUE(prompt.waitForOutput(kPrompt));

        kill(prompt.pid(), stopSignal);
        int status = 0;
        ASSERT_TRUE(prompt.waitForChild(status, WUNTRACED));
        ASSERT_TRUE(WIFSTOPPED(status));
        EXPECT_EQ(WSTOPSIG(status), stopSignal);
        EXPECT_TRUE(prompt.echoIsOn());

        kill(prompt.pid(), SIGCONT);
        // Echo goes off again (discarding anything typed before), then the line is read.
        ASSERT_TRUE(prompt.waitForEcho(false));
        prompt.type("after\n");
        EXPECT_EQ(prompt.password(), "after");
        ASSERT_TRUE(prompt.waitForChild(status));
        EXPECT_TRUE(WIFEXITED(status));
        EXPECT_TRUE(prompt.echoIsOn());
        const std::string& screen = prompt.screen();
        EXPECT_EQ(screen.find("after"), std::string::npos) << screen;
        EXPECT_EQ(screen.find(kPrompt), screen.rfind(kPrompt)) << "prompt shown twice";
    }
}

}  // namespace
