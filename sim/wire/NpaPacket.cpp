#include "sim/wire/NpaPacket.h"

namespace corvelsim {

Bytes makePacket(uint8_t flags, const Bytes& content)
{
    size_t contentSize = content.size() < kMaxContent ? content.size() : kMaxContent;
    Bytes packet;
    packet.reserve(contentSize + 4);
    packet.push_back(kStartByte);
    appendBE16(packet, unsigned(contentSize + 1));
    packet.push_back(flags);
    packet.insert(packet.end(), content.begin(), content.begin() + long(contentSize));
    return packet;
}

}  // namespace corvelsim
