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

// Each open() starts the next scripted answer. A read returns at most `length`
// bytes of it; with nothing left it lets the transport's quiet time (5 s) pass
// on the clock and returns 0.
class FakeCommTransport : public CommTransport {
public:
    void addAnswer(const std::string& hex) { addAnswer(bytesFromHex(hex)); }
    void addAnswer(const std::vector<uint8_t>& bytes) { answers.push_back(bytes); }

    int32_t open(const char*) override
    {
        pending.clear();
        if (!answers.empty()) {
            pending = answers.front();
            answers.pop_front();
        }
        return 0;
    }
    int32_t close() override { return ++closes, 0; }
    int32_t read(uint8_t* buffer, int32_t length) override
    {
        if (pending.empty()) {
            currentClock().waited(5 * 1000 * 1000);
            return 0;
        }
        const size_t count = std::min(pending.size(), static_cast<size_t>(length));
        std::copy_n(pending.begin(), count, buffer);
        pending.erase(pending.begin(), pending.begin() + static_cast<long>(count));
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
    std::deque<std::vector<uint8_t>> answers;
    std::vector<uint8_t> pending;
};
