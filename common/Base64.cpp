#include "common/Base64.h"

#include <climits>

namespace {

const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The 6-bit value of an alphabet character, or -1.
int sextet(unsigned char c)
{
    if (c >= 'A' && c <= 'Z') {
        return c - 'A';
    }
    if (c >= 'a' && c <= 'z') {
        return c - 'a' + 26;
    }
    if (c >= '0' && c <= '9') {
        return c - '0' + 52;
    }
    if (c == '+') {
        return 62;
    }
    if (c == '/') {
        return 63;
    }
    return -1;
}

// Reads the text as if "====" followed it, skipping characters that are
// neither "=" nor in the alphabet.
class GroupReader {
public:
    explicit GroupReader(const char* text) : m_Text(text == nullptr ? "" : text) {}

    void nextGroup(char group[4])
    {
        for (int i = 0; i < 4; ++i) {
            group[i] = nextCharacter();
        }
    }

private:
    char nextCharacter()
    {
        while (*m_Text != '\0') {
            const char c = *m_Text++;
            if (c == '=' || sextet(static_cast<unsigned char>(c)) >= 0) {
                return c;
            }
        }
        return '=';  // past the end: the appended padding
    }

    const char* m_Text;
};

// The number of bytes a group yields: 3 less its trailing padding, and 0 when
// padding stands before an alphabet character.
int groupByteCount(const char group[4])
{
    int count = 3;
    bool seenAlphabet = false;
    for (int i = 3; i >= 0; --i) {
        if (group[i] != '=') {
            seenAlphabet = true;
        } else if (seenAlphabet) {
            return 0;
        } else {
            --count;
        }
    }
    return count < 0 ? 0 : count;
}

}  // namespace

bool Base64::encode(const unsigned char* in, uint32_t length, char* out, uint32_t capacity)
{
    const uint64_t needed = 4 * ((static_cast<uint64_t>(length) + 2) / 3);
    if (out == nullptr || capacity == 0 || needed > static_cast<uint64_t>(capacity) - 1) {
        return false;
    }
    uint32_t written = 0;
    for (uint32_t pos = 0; pos < length; pos += 3) {
        const uint32_t remaining = length - pos;
        const uint32_t b0 = in[pos];
        const uint32_t b1 = remaining > 1 ? in[pos + 1] : 0;
        const uint32_t b2 = remaining > 2 ? in[pos + 2] : 0;
        const uint32_t value = (b0 << 16) | (b1 << 8) | b2;
        out[written++] = kAlphabet[(value >> 18) & 0x3F];
        out[written++] = kAlphabet[(value >> 12) & 0x3F];
        out[written++] = remaining > 1 ? kAlphabet[(value >> 6) & 0x3F] : '=';
        out[written++] = remaining > 2 ? kAlphabet[value & 0x3F] : '=';
    }
    out[written] = '\0';
    return true;
}

int Base64::decode(const char* text, unsigned char* out, uint32_t capacity)
{
    const uint32_t limit = capacity > INT_MAX ? INT_MAX : capacity;
    GroupReader reader(text);
    uint32_t written = 0;
    int count = 3;
    while (count == 3) {
        char group[4];
        reader.nextGroup(group);
        count = groupByteCount(group);
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            const int bits = group[i] == '=' ? 0 : sextet(static_cast<unsigned char>(group[i]));
            value = (value << 6) | static_cast<uint32_t>(bits);
        }
        if (static_cast<uint32_t>(count) > limit - written) {
            return -1;
        }
        for (int i = 0; i < count; ++i) {
            out[written++] = static_cast<unsigned char>(value >> (16 - 8 * i));
        }
    }
    return static_cast<int>(written);
}
