#include "sim/wire/Bytes.h"

namespace corvelsim {

namespace {
const char kDigits[] = "0123456789ABCDEF";

int digitValue(char c)
{
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
}
}  // namespace

std::string toHex(const uint8_t* data, size_t count)
{
    std::string text;
    text.reserve(count * 2);
    for (size_t i = 0; i < count; ++i) {
        text += kDigits[data[i] >> 4];
        text += kDigits[data[i] & 0x0F];
    }
    return text;
}

std::string hexByte(uint8_t value) { return toHex(&value, 1); }

bool fromHex(const std::string& text, Bytes& out)
{
    if (text.size() % 2 != 0) return false;
    Bytes bytes;
    bytes.reserve(text.size() / 2);
    for (size_t i = 0; i < text.size(); i += 2) {
        int high = digitValue(text[i]);
        int low = digitValue(text[i + 1]);
        if (high < 0 || low < 0) return false;
        bytes.push_back(uint8_t(high * 16 + low));
    }
    out = std::move(bytes);
    return true;
}

}  // namespace corvelsim
