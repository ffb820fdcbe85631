// Byte comparisons whose failure message shows expected and received bytes
// side by side as hex dumps, with the differing lines marked.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace e2e {

using Bytes = std::vector<uint8_t>;

Bytes bytesOf(const std::string& text);
Bytes bytesFromHex(const std::string& hex);  // "A50006..." (blanks allowed)

// The two dumps side by side, 8 bytes a line, "!" on lines that differ.
std::string sideBySide(const Bytes& expected, const Bytes& received);

::testing::AssertionResult sameBytes(const Bytes& expected, const Bytes& received);
::testing::AssertionResult sameText(const std::string& expected, const std::string& received);
// `received` begins with `expected`.
::testing::AssertionResult startsWithText(const std::string& expected, const std::string& received);

}  // namespace e2e
