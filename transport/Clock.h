// The clock through which the core reads the time and sleeps, so that tests
// can run the protocol's fixed waits without waiting for them. Reached as
// Seam<Clock>::get(): the system clock unless a test installed another.
#pragma once

#include <ctime>

#include "common/Seam.h"

class Clock {
public:
    virtual ~Clock() = default;
    // Current time in whole seconds, as time(nullptr) gives it.
    virtual std::time_t now() = 0;
    // Sleeps whole seconds, as sleep() does.
    virtual void sleep(unsigned seconds) = 0;
    // Called where the code would block in select() for up to `microseconds`;
    // the system clock does nothing here (the select itself waits), a test
    // clock may advance its time.
    virtual void waited(long microseconds) { (void)microseconds; }
    // Milliseconds on a clock that never goes back, for deadlines shorter than a second.
    virtual long long monotonicMs() = 0;
};

// Real time and real sleeps.
template <>
Clock& Seam<Clock>::systemDefault();
