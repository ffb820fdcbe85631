// Gathers a printer's answer from bytes as they arrive and says when it is
// whole: bytes before a start byte are noise and skipped; a packet is taken
// once its length field says all of it has come; the answer ends with a
// packet that announces no further one, or with a packet flagged to be
// dropped (the refusal is one).
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace npa {

class AnswerAssembler {
public:
    // `alsoWhole` may declare the answer whole before its last packet (the
    // certificate manager's closed XML document); it sees the kept content.
    using WholeTest = std::function<bool(const std::vector<uint8_t>& content)>;
    explicit AnswerAssembler(WholeTest alsoWhole = nullptr);

    // Takes the next bytes; those after the end of a whole answer are ignored.
    void add(const uint8_t* bytes, size_t count);

    bool whole() const { return m_Whole; }
    // The printer refused the request as framed (flags 0xD4).
    bool refused() const { return m_Refused; }
    // More bytes came than any answer may hold: the answer is malformed.
    bool overflowed() const { return m_Overflowed; }
    // The content of every kept packet after its flags byte, in order.
    const std::vector<uint8_t>& content() const { return m_Content; }
    // Every byte taken, noise included, as it came.
    const std::vector<uint8_t>& received() const { return m_Received; }
    size_t noiseBytes() const { return m_Noise; }
    // The flags byte of every packet, in order.
    const std::vector<uint8_t>& packetFlags() const { return m_Flags; }

    // The most any answer may hold; the printer's largest is a certificate
    // signing request of a few kilobytes.
    static constexpr size_t kLargestAnswer = 1 << 20;

private:
    void takePacket(size_t start, size_t length);

    WholeTest m_AlsoWhole;
    std::vector<uint8_t> m_Received;
    std::vector<uint8_t> m_Content;
    std::vector<uint8_t> m_Flags;
    size_t m_Next = 0;  // the first byte of m_Received not yet judged
    size_t m_Noise = 0;
    bool m_Whole = false;
    bool m_Refused = false;
    bool m_Overflowed = false;
};

}  // namespace npa
