// Reading one field of the printer and finding its value in the answer, for
// front ends that show values rather than trace lines.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "npa/ExchangeReport.h"
#include "npa/NpaFrame.h"

class NPAChannel;

namespace npa {

struct FieldValue {
    ExchangeReport::Outcome outcome = ExchangeReport::Outcome::None;
    bool found = false;  // the answer held the value of the field asked for
    std::vector<uint8_t> value;
};

// Sends the read request of `key`, in the pass-through envelope unless
// `plain`, and finds the value in the answer. Needs answer-driven exchanges.
FieldValue readField(NPAChannel& channel, Key key, bool plain);

// The printer's name of an 802.1x status (0-11), "Unknown status" for any other.
const char* authStatusName(int status);

// The text of a value: up to its first zero byte.
std::string textOf(const std::vector<uint8_t>& value);

}  // namespace npa
