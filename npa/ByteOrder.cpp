// Big-endian conversion for frame lengths, item lengths and numeric values.
#include "npa/ByteOrder.h"

void toBigEndian(uint32_t value, uint8_t* out, int count)
{
    for (int i = 0; i < count; ++i) {
        const int shiftBytes = count - 1 - i;
        // Shifting a 32-bit value by 32 or more is undefined: those bytes are 0.
        out[i] = shiftBytes < 4 ? static_cast<uint8_t>(value >> (8 * shiftBytes)) : 0;
    }
}

uint32_t fromBigEndian(const uint8_t* bytes, int count)
{
    uint32_t value = 0;
    for (int i = 0; i < count; ++i) {
        value = (value << 8) | bytes[i];
    }
    return value;
}
