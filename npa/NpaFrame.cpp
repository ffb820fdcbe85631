// Framing of requests and items, and the search for a read value in an answer.
#include "npa/NpaFrame.h"

#include <algorithm>

#include "npa/ByteOrder.h"

namespace npa {

namespace {

constexpr size_t kItemHeaderSize = 5;

void appendItemHeader(std::vector<uint8_t>& items, Key key, size_t valueLength)
{
    const uint8_t header[kItemHeaderSize] = {key.group, key.field, 0x00, 0, 0};
    items.insert(items.end(), header, header + kItemHeaderSize);
    toBigEndian(static_cast<uint32_t>(valueLength), &items[items.size() - 2], 2);
}

}  // namespace

std::vector<uint8_t> frameRequest(const Command& command, const std::vector<uint8_t>& body)
{
    std::vector<uint8_t> request = {kStartByte, 0, 0, kFlagsRequest, command[0], command[1], command[2]};
    // The length field counts the flags, the command bytes and the body.
    toBigEndian(static_cast<uint32_t>(body.size() + 4), &request[1], 2);
    request.insert(request.end(), body.begin(), body.end());
    return request;
}

size_t appendNumericItem(std::vector<uint8_t>& items, Key key, uint32_t value)
{
    appendItemHeader(items, key, 4);
    items.resize(items.size() + 4);
    toBigEndian(value, &items[items.size() - 4], 4);
    return kItemHeaderSize + 4;
}

size_t appendFlagItem(std::vector<uint8_t>& items, Key key, uint8_t flag)
{
    appendItemHeader(items, key, 1);
    items.push_back(flag);
    return kItemHeaderSize + 1;
}

size_t appendTextItem(std::vector<uint8_t>& items, Key key, const std::string& text, size_t maxValueLength,
                      bool withZero)
{
    const size_t limit = std::min<size_t>(maxValueLength, 0xFFFF);
    const size_t valueLength = std::min(text.size() + (withZero ? 1 : 0), limit);
    const size_t characters = withZero && valueLength > 0 ? valueLength - 1 : valueLength;
    appendItemHeader(items, key, valueLength);
    items.insert(items.end(), text.begin(), text.begin() + static_cast<std::ptrdiff_t>(characters));
    items.resize(items.size() + (valueLength - characters), 0);  // the zero byte
    return kItemHeaderSize + valueLength;
}

std::vector<uint8_t> settingsRequest(const std::vector<uint8_t>& items)
{
    return frameRequest(kSettingsCommand, items);
}

std::vector<uint8_t> readRequest(Key key) { return frameRequest(kReadCommand, {key.group, key.field}); }

std::vector<uint8_t> resetRequest()
{
    std::vector<uint8_t> item;
    appendFlagItem(item, kReset, 1);
    return settingsRequest(item);
}

std::vector<uint8_t> wrapPassThrough(const std::vector<uint8_t>& request)
{
    std::vector<uint8_t> body(2);
    toBigEndian(static_cast<uint32_t>(request.size()), body.data(), 2);
    body.insert(body.end(), request.begin(), request.end());
    return frameRequest(kPassThroughCommand, body);
}

bool isRefused(const uint8_t* answer, size_t count)
{
    // A flags byte needs a whole header: a shorter answer is never a refusal.
    return count > kFlagsOffset && answer[kFlagsOffset] == kFlagsRefused;
}

ValueSpan findReadValue(const std::vector<uint8_t>& answer, Key key)
{
    constexpr size_t kHeaderSize = 11;
    const uint8_t repeated[6] = {kFlagsRequest,   kReadCommand[0], kReadCommand[1],
                                 kReadCommand[2], key.group,       key.field};
    ValueSpan span;
    for (size_t at = 0; at + kHeaderSize <= answer.size(); ++at) {
        const auto repeatedAt = answer.begin() + static_cast<std::ptrdiff_t>(at + kFlagsOffset);
        if (answer[at] != kStartByte || !std::equal(repeated, repeated + 6, repeatedAt)) {
            continue;
        }
        const size_t declared = fromBigEndian(answer.data() + at + 9, 2);
        span.found = true;
        span.offset = at + kHeaderSize;
        span.length = std::min(declared, answer.size() - span.offset);
        return span;
    }
    return span;
}

}  // namespace npa
