// The hidden password prompt: reads one line without echo and leaves the
// terminal usable whatever the user does meanwhile (Ctrl-C, Ctrl-Z, hang-up).
#include "npa/PasswordPrompt.h"

#include <cerrno>
#include <csignal>
#include <cstddef>

#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace {

const char kPrompt[] = "Please provide the password:";

// The signals a user sends to interrupt, quit or suspend a prompt.
constexpr int kPromptSignals[] = {SIGINT, SIGHUP, SIGQUIT, SIGTERM, SIGTSTP, SIGTTIN, SIGTTOU};
constexpr std::size_t kSignalCount = sizeof kPromptSignals / sizeof kPromptSignals[0];

// Set by the handler: the number of each prompt signal caught, else 0.
volatile std::sig_atomic_t caughtSignals[kSignalCount];

void recordSignal(int signalNumber)
{
    for (std::size_t i = 0; i < kSignalCount; ++i) {
        if (kPromptSignals[i] == signalNumber) caughtSignals[i] = signalNumber;
    }
}

bool isStopSignal(int signalNumber)
{
    return signalNumber == SIGTSTP || signalNumber == SIGTTIN || signalNumber == SIGTTOU;
}

void writeAndFlush(std::FILE* output, const char* text)
{
    if (output == nullptr) return;
    std::fputs(text, output);
    std::fflush(output);
}

// For its lifetime: the prompt signals the caller does not ignore are caught
// (and held blocked except while waiting for a key), and a terminal input does
// not echo. The destructor puts back the terminal first, then the caller's
// handlers and signal mask, so a signal still pending acts only once the
// terminal is sane again.
class QuietInputSession {
public:
    explicit QuietInputSession(int inputFd) : inputFd_(inputFd)
    {
        sigset_t promptSignals;
        sigemptyset(&promptSignals);
        for (int signalNumber : kPromptSignals) sigaddset(&promptSignals, signalNumber);
        sigprocmask(SIG_BLOCK, &promptSignals, &callerMask_);
        sigprocmask(SIG_SETMASK, nullptr, &heldMask_);

        struct sigaction catching {};
        catching.sa_handler = recordSignal;
        catching.sa_mask = promptSignals;
        catching.sa_flags = 0;  // no SA_RESTART: a signal must end a blocked read
        for (std::size_t i = 0; i < kSignalCount; ++i) {
            caughtSignals[i] = 0;
            sigaction(kPromptSignals[i], nullptr, &callerActions_[i]);
            // A signal the caller ignores stays ignored: it would not have ended the prompt.
            const bool ignored =
                (callerActions_[i].sa_flags & SA_SIGINFO) == 0 && callerActions_[i].sa_handler == SIG_IGN;
            installed_[i] = !ignored && sigaction(kPromptSignals[i], &catching, nullptr) == 0;
        }

        // Pipes, files and /dev/null are read as they are.
        isTerminal_ = tcgetattr(inputFd_, &callerTerminal_) == 0;
        if (isTerminal_) {
            termios quiet = callerTerminal_;
            quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            tcsetattr(inputFd_, TCSAFLUSH, &quiet);
        }
    }

    ~QuietInputSession()
    {
        if (isTerminal_) tcsetattr(inputFd_, TCSAFLUSH, &callerTerminal_);
        for (std::size_t i = 0; i < kSignalCount; ++i) {
            if (installed_[i]) sigaction(kPromptSignals[i], &callerActions_[i], nullptr);
        }
        sigprocmask(SIG_SETMASK, &callerMask_, nullptr);
    }

    QuietInputSession(const QuietInputSession&) = delete;
    QuietInputSession& operator=(const QuietInputSession&) = delete;

    static bool signalCaught()
    {
        for (std::size_t i = 0; i < kSignalCount; ++i) {
            if (caughtSignals[i] != 0) return true;
        }
        return false;
    }

    // Waits until the input has something to give (a byte, its end or an
    // error). The prompt signals are let in only inside this wait, so one that
    // arrives just before it ends the wait instead of being noticed only after
    // the next key.
    int waitForInput() const
    {
        pollfd input{inputFd_, POLLIN, 0};
        return ppoll(&input, 1, nullptr, &callerMask_);
    }

    // Reads one byte with the prompt signals let in: a terminal read from the
    // background must be able to stop the process rather than fail.
    ssize_t readByte(char& byte) const
    {
        sigprocmask(SIG_SETMASK, &callerMask_, nullptr);
        const ssize_t count = read(inputFd_, &byte, 1);
        const int readError = errno;
        sigprocmask(SIG_SETMASK, &heldMask_, nullptr);
        errno = readError;
        return count;
    }

private:
    int inputFd_;
    sigset_t callerMask_{};
    sigset_t heldMask_{};
    struct sigaction callerActions_[kSignalCount] {};
    bool installed_[kSignalCount]{};
    bool isTerminal_ = false;
    termios callerTerminal_{};
};

enum class LineEnd { Finished, Interrupted };

// Appends characters to `password` until a newline, the end of input or a
// read error (Finished), or until a prompt signal was caught (Interrupted).
LineEnd readHiddenLine(const QuietInputSession& session, int inputFd, std::string& password)
{
    // poll() skips a negative descriptor and would wait for ever.
    if (inputFd < 0) return LineEnd::Finished;
    for (;;) {
        if (QuietInputSession::signalCaught()) return LineEnd::Interrupted;
        if (session.waitForInput() < 0) {
            if (errno == EINTR) continue;
            return LineEnd::Finished;
        }
        char byte = 0;
        const ssize_t count = session.readByte(byte);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0 || byte == '\n') return LineEnd::Finished;
        password.push_back(byte);
    }
}

// Sends each caught signal again now that the caller's handling is back, so
// it does what it would have done without the prompt. Returns whether one of
// them was a stop (the process has been continued when raise returns).
bool resendCaughtSignals()
{
    bool stopped = false;
    for (std::size_t i = 0; i < kSignalCount; ++i) {
        const int signalNumber = caughtSignals[i];
        if (signalNumber == 0) continue;
        caughtSignals[i] = 0;
        std::raise(signalNumber);
        stopped = stopped || isStopSignal(signalNumber);
    }
    return stopped;
}

}  // namespace

std::string promptForPassword() { return promptForPassword(STDIN_FILENO, stdout); }

std::string promptForPassword(int inputFd, std::FILE* output)
{
    std::string password;
    bool promptShown = false;
    for (;;) {
        LineEnd end;
        {
            QuietInputSession session(inputFd);
            // Shown once echo is off, so nothing typed after it can be echoed.
            if (!promptShown) writeAndFlush(output, kPrompt);
            promptShown = true;
            end = readHiddenLine(session, inputFd, password);
        }
        const bool wasStopped = resendCaughtSignals();
        // Continued after a stop: echo goes off again and the same line reads on.
        // A signal the caller's own handler survived ends the line as it stands.
        if (end == LineEnd::Finished || !wasStopped) break;
    }
    writeAndFlush(output, "\n\n");
    return password;
}

namespace {

class TerminalPasswordSource : public PasswordSource {
public:
    std::string password() override { return promptForPassword(); }
};

}  // namespace

template <>
PasswordSource& Seam<PasswordSource>::systemDefault()
{
    static TerminalPasswordSource source;
    return source;
}
