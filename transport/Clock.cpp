// The system clock.
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

}  // namespace

template <>
Clock& Seam<Clock>::systemDefault()
{
    static SystemClock clock;
    return clock;
}
