// Request packets built from the documented frame rules, independently of the
// utility's own code, so that tests can state the exact bytes expected.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "tests/e2e/ByteCompare.h"

namespace e2e {

// One item: group, field, 00, 16-bit big-endian value length, value.
Bytes item(uint8_t group, uint8_t field, const Bytes& value);
// A 4-byte big-endian number (value length 4).
Bytes numberItem(uint8_t group, uint8_t field, uint32_t value);
// The characters, followed by a zero byte when `withZero`.
Bytes textItem(uint8_t group, uint8_t field, const std::string& text, bool withZero);

// A5, length, 50, E0 DA 01 and the items back to back.
Bytes settingsRequest(std::initializer_list<Bytes> items);
// A5 00 06 50 E0 D8 00 group field.
Bytes readRequest(uint8_t group, uint8_t field);
// The pass-through envelope: A5, length, 50, E0 63 02, inner length, inner packet.
Bytes envelope(const Bytes& inner);

}  // namespace e2e
