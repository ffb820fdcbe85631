#include "ctl/PrinterFanOut.h"

#include <cstddef>
#include <exception>
#include <string>
#include <system_error>
#include <thread>

namespace corvelctl {

namespace {

// Runs `work(i)` for each i below `count`, all at once, and returns when
// every one has ended. `work` must not throw.
void runAtOnce(std::size_t count, const std::function<void(std::size_t)>& work)
{
    std::vector<std::thread> threads;
    std::vector<std::size_t> notStarted;
    for (std::size_t i = 0; i < count; ++i) {
        try {
            threads.emplace_back(work, i);
        } catch (const std::system_error&) {
            notStarted.push_back(i);
        }
    }
    for (const std::size_t i : notStarted) work(i);
    for (std::thread& thread : threads) thread.join();
}

}  // namespace

std::vector<PrinterOutcome> runOnEachPrinter(const std::vector<PrinterTarget>& targets, bool json,
                                             const std::function<Report(const PrinterTarget&)>& command)
{
    std::vector<PrinterOutcome> outcomes;
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < targets.size(); ++i) {
        const PrinterTarget& target = targets[i];
        outcomes.push_back({target.path, target.serial, target.notFound, ""});
        if (!target.notFound) found.push_back(i);
    }
    // An exception must not leave its thread: that would end the process.
    runAtOnce(found.size(), [&](std::size_t k) {
        const PrinterTarget& target = targets[found[k]];
        PrinterOutcome& outcome = outcomes[found[k]];
        try {
            outcome.shown = shownReport(command(target), target.serial, json);
        } catch (const Failure& failure) {
            outcome.failure = failure;
        } catch (const std::exception& error) {
            outcome.failure = Failure(ExitStatus::Software, std::string("internal error: ") + error.what());
        } catch (...) {
            outcome.failure = Failure(ExitStatus::Software, "internal error: an unknown exception");
        }
    });
    return outcomes;
}

}  // namespace corvelctl
