// Where everything the core prints goes: the trace ("D [CVL] ..." lines, hex
// dumps) and what the user reads. Reached as Seam<Console>: the system's
// writes the trace to standard error and the user's text to standard output,
// through stdio and its buffering; another front end may silence or redirect
// both by installing its own.
#pragma once

#include <string_view>

#include "common/Seam.h"

class Console {
public:
    virtual ~Console() = default;
    virtual void trace(std::string_view text) = 0;
    virtual void user(std::string_view text) = 0;
};

template <>
Console& Seam<Console>::systemDefault();

// printf-style text to the console in force.
void traceF(const char* format, ...) __attribute__((format(printf, 1, 2)));
void userF(const char* format, ...) __attribute__((format(printf, 1, 2)));
