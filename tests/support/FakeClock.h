// A clock for tests: sleeping and select waits advance its time at once.
#pragma once

#include <ctime>
#include <vector>

#include "transport/Clock.h"

class FakeClock : public Clock {
public:
    std::time_t now() override { return start + static_cast<std::time_t>(microseconds / 1000000); }
    void sleep(unsigned seconds) override
    {
        sleeps.push_back(seconds);
        microseconds += static_cast<long long>(seconds) * 1000000;
    }
    void waited(long us) override { microseconds += us; }
    long long monotonicMs() override { return microseconds / 1000; }

    // Seconds slept, one entry per sleep() call, in order.
    std::vector<unsigned> sleeps;
    std::time_t start = 1000000;
    long long microseconds = 0;
};

// Installs a FakeClock for the lifetime of the object.
struct ScopedFakeClock {
    FakeClock clock;
    Seam<Clock>::Override installed{clock};
};
