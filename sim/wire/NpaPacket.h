// The NPA packet frame as the printer writes it: 0xA5, a 16-bit big-endian
// count of the bytes that follow, a flags byte, then the content.
#pragma once

#include "sim/wire/Bytes.h"

namespace corvelsim {

constexpr uint8_t kStartByte = 0xA5;
constexpr uint8_t kFlagsNormal = 0x50;
constexpr uint8_t kFlagMore = 0x20;      // a further packet follows
constexpr uint8_t kFlagDrop = 0x80;      // the reader drops this packet and stops
constexpr uint8_t kFlagsRefusal = 0xD4;  // the request was refused in the form sent
constexpr size_t kMaxContent = 0xFFFF - 1;

// Frames `content` (everything after the flags byte). Content beyond what a
// 16-bit length can announce is cut off.
Bytes makePacket(uint8_t flags, const Bytes& content);

// Offsets inside a framed packet.
constexpr size_t kFlagsOffset = 3;
constexpr size_t kContentOffset = 4;

}  // namespace corvelsim
