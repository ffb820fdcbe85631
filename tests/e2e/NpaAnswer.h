// What the utility makes of the printer's bytes, worked out independently
// from the documented formats, for building expected debug output.
#pragma once

#include <string>

#include "tests/e2e/ByteCompare.h"

namespace e2e {

// The utility's debug dump: 16 bytes a line (fewer when there are fewer),
// "%02X " each, blanks for missing bytes, "|" and the printable characters.
std::string utilityHexDump(const Bytes& bytes);

// The answer the utility collects from the bytes the printer sent: for each
// kept packet its bytes after the A5, the two length bytes and the flags;
// noise skipped, incomplete packets dropped, a bit-7 packet ends it, a packet
// without bit 5 is the last.
Bytes keptContent(const Bytes& sent);

// The debug lines "-npa" writes for a request and the answer kept.
std::string npaTrace(const Bytes& request, const Bytes& kept);

}  // namespace e2e
