// A point in time that an exchange must not pass, on the clock in force.
#pragma once

#include "transport/Clock.h"

class Deadline {
public:
    // `milliseconds` from now.
    explicit Deadline(long long milliseconds) : m_End(Seam<Clock>::get().monotonicMs() + milliseconds) {}

    long long remainingMs() const
    {
        const long long left = m_End - Seam<Clock>::get().monotonicMs();
        return left > 0 ? left : 0;
    }
    bool passed() const { return remainingMs() == 0; }

private:
    long long m_End;
};
