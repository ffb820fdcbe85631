// The exit statuses of corvelctl, after sysexits.h, so that a script can tell
// a refusal by the printer from a typing mistake or an unplugged cable.
#pragma once

namespace corvelctl {

enum class ExitStatus : int {
    Success = 0,
    Refused = 1,            // a definite "no" from the printer
    Usage = 64,             // the command line is wrong
    DataError = 65,         // an input file holds bad data
    NoInput = 66,           // an input file is missing or unreadable
    Unavailable = 69,       // no printer, not found, several, busy, gone
    Software = 70,          // an internal error (or a part not built yet)
    CannotCreate = 73,      // an output file cannot be created
    IoError = 74,           // writing standard output or to the printer failed
    TemporaryFailure = 75,  // no answer within the deadline
    Protocol = 76,          // the printer's answer is malformed
    NoPermission = 77,      // the printer's node cannot be opened for want of rights
};

inline int exitCode(ExitStatus status) { return static_cast<int>(status); }

}  // namespace corvelctl
