// The hidden password prompt of the basic configuration.
#pragma once

#include <cstdio>
#include <string>

// Writes "Please provide the password:" to standard output, reads one line from
// standard input without echo, then writes two line ends. Returns the line
// without its newline.
std::string promptForPassword();

// The same on the given input descriptor and output stream (tests use a pty).
std::string promptForPassword(int inputFd, std::FILE* output);
