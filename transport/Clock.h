// The one seam through which the utility reads the time and sleeps, so that
// tests can run the protocol's fixed waits without waiting for them.
#pragma once

#include <ctime>

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

// The clock in force: the system clock unless a test installed another.
Clock& currentClock();

// Installs `clock` (not owned) for the whole process; nullptr restores the
// system clock.
void setClock(Clock* clock);
