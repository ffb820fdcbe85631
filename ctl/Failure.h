// Why a run of corvelctl ends without success, and how that is told.
#pragma once

#include "ctl/ExitStatus.h"

#include <cstdio>
#include <exception>
#include <optional>
#include <string>

namespace corvelctl {

// An exit status and one line saying what went wrong and what to do, without
// the "corvelctl: " prefix and without a line end. Thrown by every part of
// the front end and by the printer commands.
class Failure : public std::exception {
public:
    Failure(ExitStatus status, std::string message) : m_Status(status), m_Message(std::move(message)) {}
    ExitStatus status() const { return m_Status; }
    const std::string& message() const { return m_Message; }
    const char* what() const noexcept override { return m_Message.c_str(); }

private:
    ExitStatus m_Status;
    std::string m_Message;
};

// Writes "corvelctl: MESSAGE" on `err` and, when `json`, the object
// {"error": MESSAGE, "exit": N} on `out`. Returns the failure's exit code.
int reportFailure(const Failure& failure, bool json, std::FILE* out = stdout, std::FILE* err = stderr);

// Ends the writing to `out` (standard output): a stream in error, a failed
// flush or a failed close is an I/O error (exit 74) naming the reason.
std::optional<Failure> finishOutput(std::FILE* out);

}  // namespace corvelctl
