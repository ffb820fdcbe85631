#include "tests/e2e/ByteCompare.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace e2e {

namespace {

constexpr size_t kPerLine = 8;

std::string dumpLine(const Bytes& bytes, size_t at)
{
    std::string line;
    char cell[4];
    for (size_t i = at; i < at + kPerLine; ++i) {
        if (i < bytes.size()) {
            std::snprintf(cell, sizeof cell, "%02X ", bytes[i]);
            line += cell;
        } else {
            line += "   ";
        }
    }
    line += " ";
    for (size_t i = at; i < at + kPerLine && i < bytes.size(); ++i)
        line += (bytes[i] >= 0x20 && bytes[i] <= 0x7E) ? char(bytes[i]) : '.';
    line.resize(3 * kPerLine + 1 + kPerLine, ' ');
    return line;
}

bool lineDiffers(const Bytes& a, const Bytes& b, size_t at)
{
    for (size_t i = at; i < at + kPerLine; ++i) {
        bool inA = i < a.size(), inB = i < b.size();
        if (inA != inB || (inA && a[i] != b[i])) return true;
    }
    return false;
}

}  // namespace

Bytes bytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

Bytes bytesFromHex(const std::string& hex)
{
    Bytes bytes;
    std::string digits;
    for (char c : hex) {
        if (std::isxdigit(static_cast<unsigned char>(c))) digits += c;
    }
    for (size_t i = 0; i + 1 < digits.size(); i += 2) bytes.push_back(uint8_t(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::string sideBySide(const Bytes& expected, const Bytes& received)
{
    std::string text = "offset  expected (" + std::to_string(expected.size()) + " bytes)" +
                       std::string(3 * kPerLine + kPerLine - 18, ' ') + "| received (" +
                       std::to_string(received.size()) + " bytes)\n";
    size_t longest = std::max(expected.size(), received.size());
    char offset[32];
    for (size_t at = 0; at < longest; at += kPerLine) {
        std::snprintf(offset, sizeof offset, "%06zX ", at);
        text += std::string(lineDiffers(expected, received, at) ? "!" : " ") + offset +
                dumpLine(expected, at) + " | " + dumpLine(received, at) + "\n";
    }
    return text;
}

::testing::AssertionResult sameBytes(const Bytes& expected, const Bytes& received)
{
    if (expected == received) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "bytes differ:\n" << sideBySide(expected, received);
}

::testing::AssertionResult sameText(const std::string& expected, const std::string& received)
{
    return sameBytes(bytesOf(expected), bytesOf(received));
}

::testing::AssertionResult startsWithText(const std::string& expected, const std::string& received)
{
    if (received.compare(0, expected.size(), expected) == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "the text does not begin as expected:\n"
                                         << sideBySide(bytesOf(expected), bytesOf(received));
}

}  // namespace e2e
