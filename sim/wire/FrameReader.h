// Cuts the byte stream the utility writes into complete NPA packets.
#pragma once

#include <optional>

#include "sim/wire/Bytes.h"

namespace corvelsim {

class FrameReader {
public:
    // Adds bytes as they came from the device.
    void feed(const uint8_t* data, size_t count);

    // The next complete packet (0xA5 through its last byte), if one is there.
    // Bytes before a 0xA5 are skipped and counted as noise.
    std::optional<Bytes> nextPacket();

    // True while the start of a packet waits for the rest of it.
    bool hasPartial() const { return !m_Buffer.empty(); }

    // Gives up on an incomplete packet and hands its bytes back.
    Bytes dropPartial();

    size_t noiseSkipped() const { return m_NoiseSkipped; }

private:
    Bytes m_Buffer;
    size_t m_NoiseSkipped = 0;
};

}  // namespace corvelsim
