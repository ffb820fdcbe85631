// A transport that records every write and plays scripted printer answers,
// and hex helpers for readable mismatches.
#pragma once

#include <algorithm>
#include <cstdio>
#include <deque>
#include <string>
#include <vector>

#include "transport/Clock.h"
#include "transport/CommTransport.h"

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

// Each open() starts the next scripted answer. A read returns at most the rest
// of the current piece (the printer pausing between pieces); with nothing left
// it lets the transport's quiet time (5 s) pass on the clock and returns 0.
class FakeCommTransport : public CommTransport {
public:
    void addAnswer(const std::string& hex) { answers.push_back({bytesFromHex(hex)}); }
    void addAnswerInPieces(const std::vector<std::vector<uint8_t>>& pieces) { answers.push_back(pieces); }

    int32_t open(const char*) override
    {
        pending.clear();
        if (!answers.empty()) {
            pending.assign(answers.front().begin(), answers.front().end());
            answers.pop_front();
        }
        return 0;
    }
    int32_t close() override { return ++closes, 0; }
    int32_t read(uint8_t* buffer, int32_t length) override
    {
        while (!pending.empty() && pending.front().empty()) {
            pending.pop_front();
        }
        if (pending.empty()) {
            currentClock().waited(5 * 1000 * 1000);
            return 0;
        }
        std::vector<uint8_t>& piece = pending.front();
        const auto count = static_cast<long>(std::min(piece.size(), static_cast<size_t>(length)));
        std::copy(piece.begin(), piece.begin() + count, buffer);
        piece.erase(piece.begin(), piece.begin() + count);
        return static_cast<int32_t>(count);
    }
    int32_t write(const uint8_t* buffer, int32_t length) override
    {
        writes.emplace_back(buffer, buffer + length);
        return length;
    }
    void noop() override {}

    std::vector<std::vector<uint8_t>> writes;
    int closes = 0;

private:
    std::deque<std::vector<std::vector<uint8_t>>> answers;
    std::deque<std::vector<uint8_t>> pending;
};

