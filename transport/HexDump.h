// The byte-text helpers: the hex dump of the debug stream on standard error,
// and hexadecimal text turned into bytes.
#pragma once

#include <cstdint>
#include <string>

// The dump as text: 16 bytes a line, hex pairs, '|', printable characters.
std::string hexDumpText(const uint8_t* bytes, int32_t count);

// Writes `count` bytes to the console's trace (standard error), 16 a line:
// hex pairs, '|', printable characters.
void hexDump(const uint8_t* bytes, int32_t count);

// Converts hexadecimal text into a new byte array (caller frees with delete[]).
// Returns the byte count (half the digits, rounded down); 0 and no array for an
// empty text or a text with a character that is no hexadecimal digit.
int32_t hexToBytes(const char* text, uint8_t** bytes);
