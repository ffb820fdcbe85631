// Reading packets out of the bytes received so far.
#include "npa/AnswerAssembler.h"

#include "npa/NpaFrame.h"

namespace npa {

namespace {

constexpr size_t kHeaderSize = 3;  // start byte and the 2-byte length

}  // namespace

AnswerAssembler::AnswerAssembler(WholeTest alsoWhole) : m_AlsoWhole(std::move(alsoWhole)) {}

void AnswerAssembler::add(const uint8_t* bytes, size_t count)
{
    if (m_Whole || m_Overflowed || count == 0) {
        return;
    }
    if (m_Received.size() + count > kLargestAnswer) {
        m_Overflowed = true;
        return;
    }
    m_Received.insert(m_Received.end(), bytes, bytes + count);
    while (!m_Whole && m_Next < m_Received.size()) {
        if (m_Received[m_Next] != kStartByte) {
            ++m_Noise;
            ++m_Next;
            continue;
        }
        if (m_Received.size() - m_Next < kHeaderSize) {
            return;  // the length field has not come yet
        }
        const size_t length = (size_t(m_Received[m_Next + 1]) << 8) | m_Received[m_Next + 2];
        if (m_Received.size() - m_Next - kHeaderSize < length) {
            return;  // the rest of the packet has not come yet
        }
        takePacket(m_Next + kHeaderSize, length);
        m_Next += kHeaderSize + length;
    }
}

void AnswerAssembler::takePacket(size_t start, size_t length)
{
    // A packet without a flags byte can neither end the answer nor announce
    // another: skipped.
    if (length == 0) {
        return;
    }
    const uint8_t flags = m_Received[start];
    m_Flags.push_back(flags);
    if (flags == kFlagsRefused) {
        m_Refused = true;
    }
    if ((flags & kFlagDropAndEnd) != 0) {
        m_Whole = true;
        return;
    }
    m_Content.insert(m_Content.end(), m_Received.begin() + long(start + 1), m_Received.begin() + long(start + length));
    m_Whole = (flags & kFlagMoreFollows) == 0 || (m_AlsoWhole && m_AlsoWhole(m_Content));
}

}  // namespace npa
