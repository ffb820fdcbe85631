#include "tests/e2e/NpaFrames.h"

namespace e2e {

namespace {

void appendBigEndian16(Bytes& out, size_t value)
{
    out.push_back(static_cast<uint8_t>(value >> 8));
    out.push_back(static_cast<uint8_t>(value));
}

// A5, the 16-bit count of what follows the length field, then flags 0x50 and `body`.
Bytes frame(const Bytes& body)
{
    Bytes packet = {0xA5};
    appendBigEndian16(packet, body.size() + 1);
    packet.push_back(0x50);
    packet.insert(packet.end(), body.begin(), body.end());
    return packet;
}

}  // namespace

Bytes item(uint8_t group, uint8_t field, const Bytes& value)
{
    Bytes out = {group, field, 0x00};
    appendBigEndian16(out, value.size());
    out.insert(out.end(), value.begin(), value.end());
    return out;
}

Bytes numberItem(uint8_t group, uint8_t field, uint32_t value)
{
    return item(group, field,
                {uint8_t(value >> 24), uint8_t(value >> 16), uint8_t(value >> 8), uint8_t(value)});
}

Bytes textItem(uint8_t group, uint8_t field, const std::string& text, bool withZero)
{
    Bytes value(text.begin(), text.end());
    if (withZero) value.push_back(0);
    return item(group, field, value);
}

Bytes settingsRequest(std::initializer_list<Bytes> items)
{
    Bytes body = {0xE0, 0xDA, 0x01};
    for (const Bytes& one : items) body.insert(body.end(), one.begin(), one.end());
    return frame(body);
}

Bytes readRequest(uint8_t group, uint8_t field) { return frame({0xE0, 0xD8, 0x00, group, field}); }

Bytes envelope(const Bytes& inner)
{
    Bytes body = {0xE0, 0x63, 0x02};
    appendBigEndian16(body, inner.size());
    body.insert(body.end(), inner.begin(), inner.end());
    return frame(body);
}

}  // namespace e2e
