// Status codes that connectors record and that their wait operations return.
#pragma once

#include <cstdint>

enum class IoStatus : int32_t {
    Ok = 0,               // the operation succeeded
    Failed = 1,           // the operation failed
    Unavailable = 16,     // descriptor not open, endpoint stalled, or not offered
    Interrupted = 17,     // a system call was interrupted by a signal
    DataReady = 18,       // answer data is waiting to be read
    WriteReady = 19,      // the device accepts data
    TimedOut = 33,        // the time limit passed with nothing to report
    TryAgain = 34,        // the device was busy; the same call may succeed later
    PartialWrite = 35,    // fewer bytes were written than asked
    NothingWritten = 36,  // the write moved no byte
    Gone = 37,            // the device went away (unplugged, hung up): no later call can succeed
};
