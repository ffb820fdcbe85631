// Bytes written as hex, and comparisons whose failure message shows expected
// and received bytes as hex (texts as they are).
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace e2e {

using Bytes = std::vector<uint8_t>;

Bytes bytesFromHex(const std::string& hex);  // "A50006..." (blanks allowed)
std::string toHex(const Bytes& bytes);       // "A50006..."

::testing::AssertionResult sameBytes(const Bytes& expected, const Bytes& received);
::testing::AssertionResult sameText(const std::string& expected, const std::string& received);

}  // namespace e2e
