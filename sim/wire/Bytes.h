// Byte strings and their hexadecimal spelling, as the simulator logs them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace corvelsim {

using Bytes = std::vector<uint8_t>;

// "A5000650": two upper-case digits per byte, no blanks.
std::string toHex(const uint8_t* data, size_t count);
inline std::string toHex(const Bytes& bytes) { return toHex(bytes.data(), bytes.size()); }

// One byte as two upper-case digits ("2A").
std::string hexByte(uint8_t value);

// Hex digits back to bytes; false on an odd count or a non-digit.
bool fromHex(const std::string& text, Bytes& out);

// Big-endian 16-bit field at p.
inline unsigned readBE16(const uint8_t* p) { return (unsigned(p[0]) << 8) | p[1]; }
inline void appendBE16(Bytes& out, unsigned value)
{
    out.push_back(uint8_t(value >> 8));
    out.push_back(uint8_t(value));
}

}  // namespace corvelsim
