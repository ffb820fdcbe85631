// The number at the start of a text, read as C's atoi reads it, but bounded:
// it never reads past a length or a terminator, and never overflows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

struct LeadingNumber {
    int value = 0;        // clamped to the int range
    uint8_t lowByte = 0;  // the low 8 bits of the exact number (what a byte-sized field keeps)
};

// Reads blanks (space, \t, \n, \v, \f, \r), one optional sign and then digits,
// from at most `maxChars` characters of `text`, stopping early at a '\0'.
// No digits reads 0, and so does a sign that does not touch them.
LeadingNumber readLeadingNumber(const char* text, size_t maxChars);

inline LeadingNumber readLeadingNumber(const std::string& text) { return readLeadingNumber(text.c_str(), text.size()); }
