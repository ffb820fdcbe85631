// The hidden password prompt on a pipe and on a pseudo-terminal, including the
// signals a user sends while it waits. Every wait is bounded and each child
// arms an alarm, so a broken prompt fails the suite instead of hanging it.
#include "npa/PasswordPrompt.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <pty.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

const std::string kPrompt = "Please provide the password:";

// Runs the prompt on `inputFd` with its output in memory; returns the password.
std::string promptCapturingOutput(int inputFd, std::string& output)
{
    char* buffer = nullptr;
    size_t size = 0;
    std::FILE* stream = open_memstream(&buffer, &size);
    const std::string password = promptForPassword(inputFd, stream);
    std::fclose(stream);
    output.assign(buffer, size);
    std::free(buffer);
    return password;
}

TEST(PasswordPrompt, ReadsOneLineFromAPipeWithoutTerminalErrors)
{
    const struct {
        std::string input, expected;
    } cases[] = {{"first\nsecond\n", "first"}, {std::string("a\0b\r", 4), std::string("a\0b\r", 4)}};
    for (const auto& c : cases) {
        int fds[2];
        ASSERT_EQ(pipe(fds), 0);
        ASSERT_EQ(write(fds[1], c.input.data(), c.input.size()), static_cast<ssize_t>(c.input.size()));
        close(fds[1]);
        std::string output;
        testing::internal::CaptureStderr();
        EXPECT_EQ(promptCapturingOutput(fds[0], output), c.expected);
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "") << c.input;
        EXPECT_EQ(output, kPrompt + "\n\n");
        close(fds[0]);
    }
    std::string output;
    EXPECT_EQ(promptCapturingOutput(-1, output), "") << "a closed input must not wait for ever";
}

// A prompt in a child process whose terminal is a pty; the child exits 0 when
// the prompt returned "after".
struct PtyPrompt {
    int master = -1, slave = -1;
    pid_t child = -1;
    std::string screen;

    PtyPrompt()
    {
        if (openpty(&master, &slave, nullptr, nullptr, nullptr) != 0) return;
        child = fork();
        if (child == 0) {
            alarm(10);
            signal(SIGINT, SIG_DFL);  // as a shell starts it, even when the suite itself runs in the background
            setpgid(0, 0);            // a group with its parent outside may be stopped
            rlimit noCore{0, 0};
            setrlimit(RLIMIT_CORE, &noCore);
            _exit(promptForPassword(slave, fdopen(dup(slave), "w")) == "after" ? 0 : 3);
        }
    }
    ~PtyPrompt()
    {
        if (child > 0) kill(child, SIGKILL), waitpid(child, nullptr, 0);
        for (int fd : {master, slave}) close(fd);
    }

    // Collects the terminal's output until `text` shows up (at most 10 s).
    bool waitForScreen(const std::string& text)
    {
        char buffer[256];
        for (int round = 0; round < 100 && screen.find(text) == std::string::npos; ++round) {
            pollfd p{master, POLLIN, 0};
            const ssize_t n = poll(&p, 1, 100) > 0 ? read(master, buffer, sizeof buffer) : 0;
            screen.append(buffer, static_cast<size_t>(std::max<ssize_t>(n, 0)));
        }
        return screen.find(text) != std::string::npos;
    }
    bool echoOn() const
    {
        termios now{};
        tcgetattr(slave, &now);
        return (now.c_lflag & ECHO) != 0;
    }
    // Waits (at most 10 s) for the child to end or, with WUNTRACED, to stop.
    bool waitForChild(int& status, int options = 0)
    {
        for (int round = 0; round < 2000; ++round, usleep(5000)) {
            if (waitpid(child, &status, options | WNOHANG) == child) {
                if (!WIFSTOPPED(status)) child = -1;
                return true;
            }
        }
        return false;
    }
};

TEST(PasswordPromptOnTerminal, TerminatingSignalRestoresEchoThenKills)
{
    for (int signalNumber : {SIGINT, SIGTERM}) {
        PtyPrompt prompt;
        ASSERT_TRUE(prompt.waitForScreen(kPrompt));
        kill(prompt.child, signalNumber);
        int status = 0;
        ASSERT_TRUE(prompt.waitForChild(status));
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signalNumber) << strsignal(signalNumber);
        EXPECT_TRUE(prompt.echoOn()) << strsignal(signalNumber);
    }
}

// Typed characters stay hidden; a stop shows echo, a continue hides it again.
TEST(PasswordPromptOnTerminal, HiddenLineAcrossStopAndContinue)
{
    PtyPrompt prompt;
    ASSERT_TRUE(prompt.waitForScreen(kPrompt));
    EXPECT_FALSE(prompt.echoOn());
    kill(prompt.child, SIGTSTP);
    int status = 0;
    ASSERT_TRUE(prompt.waitForChild(status, WUNTRACED));
    ASSERT_TRUE(WIFSTOPPED(status));
    EXPECT_TRUE(prompt.echoOn());

    kill(prompt.child, SIGCONT);
    for (int round = 0; round < 2000 && prompt.echoOn(); ++round) usleep(5000);
    ASSERT_FALSE(prompt.echoOn()) << "echo must go off again after SIGCONT";
    ASSERT_EQ(write(prompt.master, "after\n", 6), 6);
    ASSERT_TRUE(prompt.waitForChild(status));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_TRUE(prompt.echoOn());
    prompt.waitForScreen("\r\n\r\n");
    EXPECT_EQ(prompt.screen.find("after"), std::string::npos) << prompt.screen;
    EXPECT_EQ(prompt.screen.find(kPrompt), prompt.screen.rfind(kPrompt)) << "prompt shown twice";
}

}  // namespace
