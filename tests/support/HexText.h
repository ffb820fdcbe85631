// Bytes written as hex text, for scripting answers and for readable mismatches.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

// "A5 00 06" -> bytes; blanks are ignored.
inline std::vector<uint8_t> bytesFromHex(std::string text)
{
    text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
    std::vector<uint8_t> bytes;
    for (size_t i = 0; i + 1 < text.size(); i += 2) {
        bytes.push_back(static_cast<uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

// Bytes -> "A5 00 06", or "A50006" with `between` "".
inline std::string hexOf(const std::vector<uint8_t>& bytes, const std::string& between = " ")
{
    std::string text;
    char pair[3];
    for (uint8_t byte : bytes) {
        std::snprintf(pair, sizeof pair, "%02X", byte);
        text += (text.empty() ? "" : between) + pair;
    }
    return text;
}

inline std::string hexOf(const std::string& text, const std::string& between = " ")
{
    return hexOf(std::vector<uint8_t>(text.begin(), text.end()), between);
}
