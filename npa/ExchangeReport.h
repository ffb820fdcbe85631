// What one answer-driven exchange did, for the front end that asked for
// answer-driven exchanges: its trace and its error messages are made from it.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/Seam.h"

namespace npa {

struct ExchangeReport {
    enum class Outcome {
        None,        // no answer-driven exchange has run
        Answered,    // a whole answer came
        Refused,     // the printer refused the request as framed
        NoAnswer,    // the deadline passed before the answer was whole
        OpenFailed,  // the printer could not be opened (`error` says why)
        IoFailed,    // reading or writing failed (`error` says why)
        Gone,        // the printer went away
        Malformed,   // more bytes came than any answer holds
    };
    Outcome outcome = Outcome::None;
    int error = 0;  // the system's error number, where one is known
    std::string path;
    std::vector<uint8_t> request;
    std::vector<uint8_t> received;  // every byte that came, noise included
    std::vector<uint8_t> content;   // the kept packets' content after their flags
    long long elapsedMs = 0;
    long long deadlineMs = 0;
};

// Told of every answer-driven exchange as it ends.
class ExchangeObserver {
public:
    virtual ~ExchangeObserver() = default;
    virtual void exchanged(const ExchangeReport& report) = 0;
};

// How the channel waits for answers, reached as Seam<AnswerDrivenTiming>:
// the system default keeps the fixed waits; a front end that installs one
// with `enabled` makes every exchange of the process answer-driven.
struct AnswerDrivenTiming {
    bool enabled = false;
    long long deadlineMs = 5000;
    long long slowDeadlineMs = 15000;  // key generation and export
    ExchangeObserver* observer = nullptr;
    // The device stays open after an exchange the printer answered whole, for
    // the next exchange on the same printer: a run of several reads opens it
    // once (over libusb each open claims the interface anew). After anything
    // else it is closed, so that a late answer is not taken for the next one.
    bool keepDeviceOpen = false;
};

}  // namespace npa

// The fixed waits.
template <>
npa::AnswerDrivenTiming& Seam<npa::AnswerDrivenTiming>::systemDefault();
