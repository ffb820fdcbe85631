// The polled exchanges: the same request is sent again until the printer's
// answer shows the awaited state, the printer refuses, or the attempts run out.
#include <cstdio>

#include "common/Console.h"
#include "npa/NPAChannel.h"
#include "npa/NpaFrame.h"
#include "transport/Clock.h"

namespace {

uint8_t lastByte(const std::vector<uint8_t>& answer, int32_t got) { return answer[static_cast<size_t>(got - 1)]; }

bool endsWith(const std::vector<uint8_t>& answer, int32_t got, uint8_t value)
{
    return got >= 1 && lastByte(answer, got) == value;
}

bool hasAddress(const std::vector<uint8_t>& answer, int32_t got, int32_t)
{
    if (got < 4) {
        return false;  // too short to hold an address: not there yet
    }
    for (int32_t i = got - 4; i < got; ++i) {
        if (answer[static_cast<size_t>(i)] != 0) {
            return true;
        }
    }
    return false;
}

bool endsInZero(const std::vector<uint8_t>& answer, int32_t got, int32_t) { return endsWith(answer, got, 0x00); }
bool endsInDash(const std::vector<uint8_t>& answer, int32_t got, int32_t) { return endsWith(answer, got, 0x2D); }
bool endsInOne(const std::vector<uint8_t>& answer, int32_t got, int32_t) { return endsWith(answer, got, 0x01); }

// The value of a read answer starts after the repeated request and its 2-byte length.
bool hasTextValue(const std::vector<uint8_t>&, int32_t got, int32_t requestLength)
{
    return requestLength >= 0 && got > requestLength + 2;
}

}  // namespace

NPAChannel::PollOutcome NPAChannel::poll(const uint8_t* request, int32_t length, const PollRule& rule,
                                         std::vector<uint8_t>& answer, int32_t& got)
{
    answer.assign(rule.answerSize, 0);
    got = 0;
    for (int attempt = 0; attempt < rule.attempts && !deviceGone(); ++attempt) {
        if (attempt > 0 && rule.pauseBetween > 0) {
            Seam<Clock>::get().sleep(rule.pauseBetween);
        }
        got = readOnce(request, length, answer, rule.waitAfterWrite);
        if (rule.canRefuse && npa::isRefused(answer.data(), static_cast<size_t>(got))) {
            return PollOutcome::Refused;
        }
        if (rule.isSuccess(answer, got, length)) {
            return PollOutcome::Success;
        }
    }
    return PollOutcome::OutOfAttempts;
}

int NPAChannel::pollUntilSeen(const uint8_t* request, int32_t length, const PollRule& rule)
{
    std::vector<uint8_t> answer;
    int32_t got = 0;
    return poll(request, length, rule, answer, got) == PollOutcome::Success ? 0 : 1;
}

int NPAChannel::pollConnection(const uint8_t* request, int32_t length)
{
    static const PollRule rule{255, 2, 4, 0, true, endsInZero};
    std::vector<uint8_t> answer;
    int32_t got = 0;
    switch (poll(request, length, rule, answer, got)) {
    case PollOutcome::Refused: return -1;
    case PollOutcome::Success: return 0;
    case PollOutcome::OutOfAttempts: break;
    }
    // The last answer's final byte tells the state the printer is in. When the
    // last attempt read nothing there is no state to tell: 1 means "not
    // connected" just as the other polled exchanges report running out.
    return got > 0 ? lastByte(answer, got) : 1;
}

int NPAChannel::pollDeviceState(const uint8_t* request, int32_t length)
{
    static const PollRule rule{255, 0, 6, 10, false, endsInDash};
    return pollUntilSeen(request, length, rule);
}

int NPAChannel::pollReset(const uint8_t* request, int32_t length)
{
    static const PollRule rule{255, 5, 2, 50, false, endsInOne};
    return pollUntilSeen(request, length, rule);
}

int NPAChannel::pollAddress(const uint8_t* request, int32_t length)
{
    static const PollRule rule{255, 3, 7, 0, true, hasAddress};
    std::vector<uint8_t> answer;
    int32_t got = 0;
    switch (poll(request, length, rule, answer, got)) {
    case PollOutcome::Refused: return -1;
    case PollOutcome::Success: {
        const uint8_t* address = answer.data() + (got - 4);
        userF("%d.%d.%d.%d\n", address[0], address[1], address[2], address[3]);
        return 0;
    }
    case PollOutcome::OutOfAttempts: break;
    }
    return 1;
}

int NPAChannel::pollText(const uint8_t* request, int32_t length)
{
    static const PollRule rule{512, 2, 7, 0, true, hasTextValue};
    std::vector<uint8_t> answer;
    int32_t got = 0;
    switch (poll(request, length, rule, answer, got)) {
    case PollOutcome::Refused: return -1;
    case PollOutcome::Success: {
        // The text ends at its zero byte or at the end of what was read.
        const auto* text = reinterpret_cast<const char*>(answer.data()) + (length + 2);
        const size_t available = static_cast<size_t>(got - (length + 2));
        size_t textLength = 0;
        while (textLength < available && text[textLength] != '\0') {
            ++textLength;
        }
        userF("%.*s\n", static_cast<int>(textLength), text);
        return 0;
    }
    case PollOutcome::OutOfAttempts: break;
    }
    return 1;
}
