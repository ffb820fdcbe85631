#include "sim/wire/FrameReader.h"

#include <algorithm>

#include "sim/wire/NpaPacket.h"

namespace corvelsim {

void FrameReader::feed(const uint8_t* data, size_t count) { m_Buffer.insert(m_Buffer.end(), data, data + count); }

std::optional<Bytes> FrameReader::nextPacket()
{
    auto start = std::find(m_Buffer.begin(), m_Buffer.end(), kStartByte);
    m_NoiseSkipped += size_t(start - m_Buffer.begin());
    m_Buffer.erase(m_Buffer.begin(), start);

    if (m_Buffer.size() < 3) return std::nullopt;
    size_t total = 3 + readBE16(&m_Buffer[1]);
    if (m_Buffer.size() < total) return std::nullopt;

    Bytes packet(m_Buffer.begin(), m_Buffer.begin() + long(total));
    m_Buffer.erase(m_Buffer.begin(), m_Buffer.begin() + long(total));
    return packet;
}

Bytes FrameReader::dropPartial()
{
    Bytes rest;
    rest.swap(m_Buffer);
    return rest;
}

}  // namespace corvelsim
