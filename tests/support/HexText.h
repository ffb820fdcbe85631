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

inline std::string hexOf(const std::vector<uint8_t>& bytes)
{
    std::string text;
    char pair[4];
    for (uint8_t byte : bytes) {
        std::snprintf(pair, sizeof pair, text.empty() ? "%02X" : " %02X", byte);
        text += pair;
    }
    return text;
}

inline std::string hexOf(const std::string& text) { return hexOf(std::vector<uint8_t>(text.begin(), text.end())); }
