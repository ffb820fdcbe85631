// Base64 with the standard alphabet and "=" padding, no line breaks: the
// BinaryElem values exchanged with the printer's certificate manager.
#pragma once

#include <cstdint>

class Base64 {
public:
    virtual ~Base64() = default;

    // Writes the text and its terminator into `out`. Refuses (false, nothing
    // written) when 4 * ceil(length / 3) characters and the terminator do not
    // fit `capacity`.
    static bool encode(const unsigned char* in, uint32_t length, char* out, uint32_t capacity);

    // Decodes groups of four alphabet or "=" characters, skipping every other
    // character, and ends at the first group that yields fewer than 3 bytes
    // (the end of the text always does). Returns the byte count, or -1 when
    // the bytes do not fit `capacity` (bytes of earlier groups stay written).
    // Capacities above INT32_MAX are treated as INT32_MAX so that the count
    // always fits the result.
    static int decode(const char* text, unsigned char* out, uint32_t capacity);
};
