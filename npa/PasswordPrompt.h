// The hidden password prompt of the basic configuration.
#pragma once

#include <cstdio>
#include <string>

#include "common/Seam.h"

// Where the network password comes from when the record has none. Reached as
// Seam<PasswordSource>: the system's asks the user on the terminal
// (promptForPassword()).
class PasswordSource {
public:
    virtual ~PasswordSource() = default;
    virtual std::string password() = 0;
};

template <>
PasswordSource& Seam<PasswordSource>::systemDefault();

// Writes "Please provide the password:" to standard output, reads one line from
// standard input without echo, then writes two line ends. Returns the line
// without its newline.
std::string promptForPassword();

// The same on the given input descriptor and output stream (tests use a pty).
std::string promptForPassword(int inputFd, std::FILE* output);
