#include "tests/e2e/HexBytes.h"

#include <cctype>
#include <cstdio>

namespace e2e {

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
    return ::testing::AssertionFailure() << "expected " << expected.size() << " bytes: " << toHex(expected)
                                         << "\nreceived " << received.size() << " bytes: " << toHex(received);
}

::testing::AssertionResult sameText(const std::string& expected, const std::string& received)
{
    if (expected == received) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "expected:\n" << expected << "\nreceived:\n" << received;
}

}  // namespace e2e
