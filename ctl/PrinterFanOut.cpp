#include "ctl/PrinterFanOut.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace corvelctl {

namespace {

struct Child {
    pid_t pid = -1;
    int readEnd = -1;  // -1 once the child's end of its pipe has closed
};

void writeAll(int fd, const std::string& bytes)
{
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;  // the parent is gone: nobody to tell
        done += static_cast<std::size_t>(written);
    }
}

// Starts the child for `index`; the parent keeps the pipe's reading end.
Child startChild(std::size_t index, const std::function<std::string(std::size_t)>& work,
                 const std::function<void()>& beforeExit, const std::vector<Child>& started, ChildEnd& end)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        end.notStarted = Failure(ExitStatus::Software, std::string("cannot make a pipe: ") + std::strerror(errno));
        return {};
    }
    const pid_t pid = ::fork();
    if (pid < 0) {
        end.notStarted = Failure(ExitStatus::Software, std::string("cannot start a process: ") + std::strerror(errno));
        ::close(ends[0]);
        ::close(ends[1]);
        return {};
    }
    if (pid == 0) {
        ::close(ends[0]);
        for (const Child& other : started) {
            if (other.readEnd >= 0) ::close(other.readEnd);
        }
        writeAll(ends[1], work(index));
        ::close(ends[1]);
        beforeExit();
        ::_exit(0);
    }
    ::close(ends[1]);
    return {pid, ends[0]};
}

// Reads every pipe until each has closed, whichever has bytes first.
void readAll(std::vector<Child>& children, std::vector<ChildEnd>& ends)
{
    for (;;) {
        std::vector<pollfd> waiting;
        std::vector<std::size_t> owners;
        for (std::size_t i = 0; i < children.size(); ++i) {
            if (children[i].readEnd < 0) continue;
            waiting.push_back({children[i].readEnd, POLLIN, 0});
            owners.push_back(i);
        }
        if (waiting.empty()) return;
        if (::poll(waiting.data(), waiting.size(), -1) < 0) {
            if (errno == EINTR) continue;
            throw Failure(ExitStatus::Software,
                          std::string("cannot wait for the printers' runs: ") + std::strerror(errno));
        }
        for (std::size_t k = 0; k < waiting.size(); ++k) {
            if (waiting[k].revents == 0) continue;
            Child& child = children[owners[k]];
            char buffer[65536];
            const ssize_t got = ::read(child.readEnd, buffer, sizeof buffer);
            if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
            if (got > 0) {
                ends[owners[k]].written.append(buffer, static_cast<std::size_t>(got));
                continue;
            }
            ::close(child.readEnd);
            child.readEnd = -1;
        }
    }
}

}  // namespace

std::vector<ChildEnd> runInChildren(std::size_t count, const std::function<std::string(std::size_t)>& work,
                                    const std::function<void()>& beforeExit)
{
    // A child must not write again what the parent had not written yet.
    std::fflush(stdout);
    std::fflush(stderr);
    std::vector<ChildEnd> ends(count);
    std::vector<Child> children;
    for (std::size_t i = 0; i < count; ++i) children.push_back(startChild(i, work, beforeExit, children, ends[i]));
    readAll(children, ends);
    for (std::size_t i = 0; i < count; ++i) {
        if (children[i].pid < 0) continue;
        while (::waitpid(children[i].pid, &ends[i].waitStatus, 0) < 0 && errno == EINTR) {}
    }
    return ends;
}

PrinterOutcome outcomeOf(const PrinterTarget& target, const ChildEnd& end)
{
    PrinterOutcome outcome{target.path, target.serial, std::nullopt, ""};
    if (end.notStarted) {
        outcome.failure = Failure(end.notStarted->status(), "internal error: " + end.notStarted->message());
        return outcome;
    }
    if (WIFSIGNALED(end.waitStatus)) {
        const int signal = WTERMSIG(end.waitStatus);
        outcome.failure =
            Failure(ExitStatus::Software, "internal error: the run on this printer was killed by signal " +
                                              std::to_string(signal) + " (" + strsignal(signal) + ")");
        return outcome;
    }
    if (!decodeOutcome(end.written, outcome)) {
        outcome.failure =
            Failure(ExitStatus::Software, "internal error: the run on this printer ended without a result");
    }
    return outcome;
}

std::vector<PrinterOutcome> runOnEachPrinter(const std::vector<PrinterTarget>& targets, bool json,
                                             const std::function<Report(const PrinterTarget&)>& command,
                                             const std::function<void()>& beforeExit)
{
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < targets.size(); ++i) {
        if (!targets[i].notFound) found.push_back(i);
    }
    const auto work = [&](std::size_t k) -> std::string {
        const PrinterTarget& target = targets[found[k]];
        try {
            return encodeSuccess(shownReport(command(target), target.serial, json));
        } catch (const Failure& failure) {
            return encodeFailure(failure);
        } catch (const std::exception& error) {
            return encodeFailure(Failure(ExitStatus::Software, std::string("internal error: ") + error.what()));
        }
    };
    const std::vector<ChildEnd> ends = runInChildren(found.size(), work, beforeExit);
    std::vector<PrinterOutcome> outcomes;
    std::size_t k = 0;
    for (const PrinterTarget& target : targets) {
        if (target.notFound) {
            outcomes.push_back({target.path, target.serial, target.notFound, ""});
        } else {
            outcomes.push_back(outcomeOf(target, ends[k++]));
        }
    }
    return outcomes;
}

}  // namespace corvelctl
