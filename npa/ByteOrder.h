// Big-endian integers as the NPA frame and its items carry them.
#pragma once

#include <cstdint>

// Writes the low `count` bytes of `value` to `out`, most significant first.
// Positions beyond the 4 bytes of a 32-bit value are written as 0; a count of
// 0 or less writes nothing.
void toBigEndian(uint32_t value, uint8_t* out, int count);

// Reads `count` bytes (at most 4 are significant) most significant first.
// A count of 0 or less reads nothing and gives 0.
uint32_t fromBigEndian(const uint8_t* bytes, int count);
