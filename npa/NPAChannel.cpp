// Construction of a channel, the collecting exchange and the settings exchange.
#include "npa/NPAChannel.h"

#include <algorithm>
#include <cstdio>

#include "common/Console.h"
#include "npa/ByteOrder.h"
#include "npa/NpaFrame.h"
#include "transport/Clock.h"
#include "transport/CommTransport.h"
#include "transport/HCUSBTransport.h"

namespace {

constexpr unsigned kExchangeWaitSeconds = 2;
constexpr unsigned kSettingsWaitSeconds = 5;
constexpr int32_t kSettingsAnswerSize = 1000;
// The certificate manager's usual time limit; its key generation and export get more.
constexpr int kUsualTimeLimitSeconds = 5;

// A transport that reports more bytes than asked for, or a negative count, must
// not make us read outside the buffer.
int32_t boundedCount(int32_t got, int32_t asked) { return std::clamp(got, 0, asked); }

// What one round of reading gave.
enum class PacketRead { NothingKept, MoreFollows, AnswerEnds };

// Reads one framed packet and appends its content after the flags byte to
// `answer`. Anything before a start byte is noise, skipped one byte a round.
PacketRead readPacket(CommTransport& transport, std::vector<uint8_t>& answer)
{
    uint8_t startByte = 0;
    uint8_t lengthField[2] = {0, 0};
    if (boundedCount(transport.read(&startByte, 1), 1) != 1 || startByte != npa::kStartByte ||
        boundedCount(transport.read(lengthField, 2), 2) != 2) {
        return PacketRead::NothingKept;
    }
    // A packet of length 0 has no flags byte, so it can neither end the answer
    // nor announce another packet: it is skipped like noise, and the answer
    // goes on until a real packet ends it or the time limit is reached.
    const auto packetLength = static_cast<int32_t>(fromBigEndian(lengthField, 2));
    if (packetLength == 0) {
        return PacketRead::NothingKept;
    }
    std::vector<uint8_t> packet(static_cast<size_t>(packetLength), 0);
    if (boundedCount(transport.read(packet.data(), packetLength), packetLength) != packetLength) {
        return PacketRead::NothingKept;  // an incomplete packet is dropped
    }
    const uint8_t flags = packet[0];
    if ((flags & npa::kFlagDropAndEnd) != 0) {
        return PacketRead::AnswerEnds;
    }
    answer.insert(answer.end(), packet.begin() + 1, packet.end());
    return (flags & npa::kFlagMoreFollows) != 0 ? PacketRead::MoreFollows : PacketRead::AnswerEnds;
}

}  // namespace

NPAChannel::NPAChannel(const std::string& path) : devicePath(path), transport(*HCUSBTransport::getInstance()) {}

NPAChannel::~NPAChannel() { HCUSBTransport::releaseInstance(); }

std::unique_ptr<NPAChannel> NPAChannel::duplicate() const { return std::make_unique<NPAChannel>(devicePath); }

int32_t NPAChannel::exchangeNPA(const uint8_t* request, int32_t length, std::vector<uint8_t>& answer,
                                int timeLimitSeconds)
{
    return exchangeNPA(request, length, answer, timeLimitSeconds, nullptr);
}

int32_t NPAChannel::exchangeNPA(const uint8_t* request, int32_t length, std::vector<uint8_t>& answer,
                                int timeLimitSeconds, const npa::AnswerAssembler::WholeTest& alsoWhole)
{
    answer.clear();
    if (Seam<npa::AnswerDrivenTiming>::get().enabled) {
        // Exchanges allowed more than the usual limit are the slow ones.
        answer = answerDriven(request, length, timeLimitSeconds > kUsualTimeLimitSeconds, alsoWhole).content;
        return static_cast<int32_t>(answer.size());
    }
    if (transport.open(devicePath.c_str()) != 0) {
        if (!transport.deviceGone()) {  // a printer gone was reported once already
            traceF("D [CVL] Failed to open usb device '%s'!\n", devicePath.c_str());
        }
        return 0;
    }
    transport.write(request, length);

    Clock& clock = Seam<Clock>::get();
    clock.sleep(kExchangeWaitSeconds);
    const std::time_t start = clock.now();

    while (readPacket(transport, answer) != PacketRead::AnswerEnds) {
        if (clock.now() - start >= timeLimitSeconds || transport.deviceGone()) {
            break;
        }
    }

    transport.close();
    return static_cast<int32_t>(answer.size());
}

bool NPAChannel::deviceGone() const { return transport.deviceGone(); }

int NPAChannel::sendSettings(const uint8_t* request, int32_t length)
{
    if (Seam<npa::AnswerDrivenTiming>::get().enabled) {
        const npa::ExchangeReport& report = answerDriven(request, length, false, nullptr);
        if (report.outcome != npa::ExchangeReport::Outcome::Answered || report.content.empty()) {
            return -1;
        }
        return report.content.back() == 0x01 ? 0 : 1;
    }
    std::vector<uint8_t> answer(kSettingsAnswerSize, 0);
    // A failed open shows as an empty answer; a printer gone gets no more waits.
    if (transport.open(devicePath.c_str()) != 0 && transport.deviceGone()) {
        return -1;
    }
    transport.write(request, length);
    Seam<Clock>::get().sleep(kSettingsWaitSeconds);
    const int32_t got = boundedCount(transport.read(answer.data(), kSettingsAnswerSize), kSettingsAnswerSize);
    transport.close();

    if (got == 0 || npa::isRefused(answer.data(), static_cast<size_t>(got))) {
        return -1;
    }
    return answer[static_cast<size_t>(got - 1)] == 0x01 ? 0 : 1;
}

int32_t NPAChannel::readOnce(const uint8_t* request, int32_t length, std::vector<uint8_t>& buffer, unsigned waitSeconds)
{
    std::fill(buffer.begin(), buffer.end(), 0);
    // A failed open shows as an empty answer; a printer gone gets no more waits.
    if (transport.open(devicePath.c_str()) != 0 && transport.deviceGone()) {
        return 0;
    }
    transport.write(request, length);
    if (waitSeconds > 0) {
        Seam<Clock>::get().sleep(waitSeconds);
    }
    const int32_t size = static_cast<int32_t>(buffer.size());
    const int32_t got = boundedCount(transport.read(buffer.data(), size), size);
    transport.close();
    return got;
}
