#include "tests/e2e/HexBytes.h"

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace e2e {

namespace {

constexpr size_t kPerLine = 8;

// "A5 00 06 ...  |..P.....|", blanks past the end.
std::string dumpLine(const Bytes& bytes, size_t at)
{
    std::string hex, text;
    for (size_t i = at; i < at + kPerLine; ++i) {
        char cell[4] = "   ";
        if (i < bytes.size()) std::snprintf(cell, sizeof cell, "%02X ", bytes[i]);
        hex += cell;
        text += i >= bytes.size() ? ' ' : (bytes[i] >= 0x20 && bytes[i] <= 0x7E) ? char(bytes[i]) : '.';
    }
    return hex + "|" + text + "|";
}

}  // namespace

Bytes bytesFromHex(const std::string& hex)
{
    std::string digits;
    for (char c : hex)
        if (std::isxdigit(static_cast<unsigned char>(c))) digits += c;
    Bytes bytes;
    for (size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(uint8_t(std::stoi(digits.substr(i, 2), nullptr, 16)));
    return bytes;
}

std::string toHex(const Bytes& bytes)
{
    std::string hex;
    char two[3];
    for (uint8_t b : bytes) {
        std::snprintf(two, sizeof two, "%02X", b);
        hex += two;
    }
    return hex;
}

::testing::AssertionResult sameBytes(const Bytes& expected, const Bytes& received)
{
    if (expected == received) return ::testing::AssertionSuccess();
    auto failure = ::testing::AssertionFailure();
    failure << "expected " << expected.size() << " bytes | received " << received.size() << " bytes\n";
    for (size_t at = 0; at < std::max(expected.size(), received.size()); at += kPerLine) {
        std::string left = dumpLine(expected, at), right = dumpLine(received, at);
        failure << (left == right ? "  " : "! ") << left << "  " << right << "\n";
    }
    return failure;
}

::testing::AssertionResult sameText(const std::string& expected, const std::string& received)
{
    return sameBytes(Bytes(expected.begin(), expected.end()), Bytes(received.begin(), received.end()));
}

}  // namespace e2e
