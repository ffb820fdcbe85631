// The system clock and the process-wide clock in force.
#include "transport/Clock.h"

#include <unistd.h>

#include <chrono>

namespace {

// Real time in whole seconds and real sleeps; select() does its own waiting.
class SystemClock : public Clock {
public:
    std::time_t now() override { return std::time(nullptr); }
    void sleep(unsigned seconds) override { ::sleep(seconds); }
    long long monotonicMs() override
    {
        using namespace std::chrono;
        return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
    }
};

SystemClock systemClock;
Clock* installedClock = nullptr;

}  // namespace

Clock& currentClock() { return installedClock != nullptr ? *installedClock : systemClock; }

void setClock(Clock* clock) { installedClock = clock; }
