// The two byte-text helpers: the hex dump of the debug stream and the
// conversion of hexadecimal text into bytes.
#include <cctype>
#include <cstdio>
#include <cstring>
#include <string>

#include "transport/HexDump.h"

#include "common/Console.h"

namespace {

constexpr int32_t kBytesPerLine = 16;

// Value of an upper-case hexadecimal digit, or -1.
int hexDigitValue(int c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

}  // namespace

// Lines of up to 16 bytes: "XX " each, three blanks for each byte a short
// line lacks (only when the dump is wider than that line), '|', then the
// bytes as characters with '.' for the unprintable.
std::string hexDumpText(const uint8_t* bytes, int32_t count)
{
    std::string text;
    if (bytes == nullptr || count <= 0) {
        return text;
    }
    static const char kDigits[] = "0123456789ABCDEF";
    const int32_t width = count < kBytesPerLine ? count : kBytesPerLine;
    for (int32_t start = 0; start < count; start += width) {
        const int32_t n = count - start < width ? count - start : width;
        for (int32_t i = 0; i < n; ++i) {
            const uint8_t c = bytes[start + i];
            text += kDigits[c >> 4];
            text += kDigits[c & 0x0F];
            text += ' ';
        }
        for (int32_t i = n; i < width; ++i) {
            text += "   ";
        }
        text += '|';
        for (int32_t i = 0; i < n; ++i) {
            const uint8_t c = bytes[start + i];
            text += static_cast<char>(c >= 0x20 && c <= 0x7E ? c : '.');
        }
        text += '\n';
    }
    return text;
}

void hexDump(const uint8_t* bytes, int32_t count) { Seam<Console>::get().trace(hexDumpText(bytes, count)); }

// On a character that is no hexadecimal digit the message goes to standard
// output with the character's code (as an unsigned byte), the array is freed,
// *bytes becomes null and the count returned is 0: there are no bytes. A
// single digit gives 0 bytes and no array either.
int32_t hexToBytes(const char* text, uint8_t** bytes)
{
    if (text == nullptr || bytes == nullptr) {
        return 0;
    }
    const size_t length = std::strlen(text);
    if (length == 0) {
        return 0;
    }
    const size_t size = length / 2;
    if (size > static_cast<size_t>(INT32_MAX)) {
        return 0;  // the count could not be returned
    }
    uint8_t* converted = size > 0 ? new uint8_t[size]() : nullptr;
    *bytes = converted;
    for (size_t i = 0; i < length; ++i) {
        const int upper = std::toupper(static_cast<unsigned char>(text[i]));
        const int value = hexDigitValue(upper);
        if (value < 0) {
            userF("not valid Hex char?! '%X'\n", static_cast<unsigned>(upper));
            delete[] converted;
            *bytes = nullptr;
            return 0;
        }
        // The last digit of an odd-length text has no partner and is not stored.
        if (i / 2 < size) {
            converted[i / 2] |= static_cast<uint8_t>(i % 2 == 0 ? value << 4 : value);
        }
    }
    return static_cast<int32_t>(size);
}
