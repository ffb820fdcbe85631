// The configurator's construction, the framing of its requests and the raw sender.
#include "npa/WirelessConfigurator.h"

#include <algorithm>
#include <cstdio>

#include "npa/ByteOrder.h"
#include "npa/PasswordPrompt.h"
#include "transport/HCUSBTransport.h"

namespace {

constexpr uint8_t kStartByte = 0xA5;
constexpr uint8_t kRequestFlags = 0x50;
constexpr size_t kItemHeaderSize = 5;

// Puts the frame start (A5, length of what follows the length field, flags)
// and the three command bytes in front of `bytes`.
void prependFrame(std::vector<uint8_t>& bytes, uint32_t followingLength, const uint8_t (&command)[3])
{
    uint8_t header[7] = {kStartByte, 0, 0, kRequestFlags, command[0], command[1], command[2]};
    toBigEndian(followingLength, header + 1, 2);
    bytes.insert(bytes.begin(), header, header + sizeof header);
}

}  // namespace

WirelessConfigurator::WirelessConfigurator(ConfigDetails& details)
    : WirelessConfigurator(details, std::make_unique<NPAChannel>(details.usbPath))
{
}

WirelessConfigurator::WirelessConfigurator(ConfigDetails& details, std::unique_ptr<NPAChannel> channel)
    : config(details), npaChannel(std::move(channel)), passwordSource([] { return promptForPassword(); })
{
}

WirelessConfigurator::~WirelessConfigurator() = default;

void WirelessConfigurator::setPassThrough(bool enabled)
{
    passThrough = enabled;
}

void WirelessConfigurator::setPasswordSource(PasswordSource source)
{
    passwordSource = std::move(source);
}

int32_t WirelessConfigurator::appendBytes(int32_t count, const uint8_t* bytes)
{
    if (count <= 0) {
        return 0;
    }
    packet.insert(packet.end(), bytes, bytes + count);
    return count;
}

void WirelessConfigurator::buildItemHeader(uint8_t* buffer, uint16_t valueLength, uint8_t field, uint8_t group)
{
    buffer[0] = group;
    buffer[1] = field;
    buffer[2] = 0x00;
    toBigEndian(valueLength, buffer + 3, 2);
}

int32_t WirelessConfigurator::wrapSettings(int32_t itemsLength)
{
    static const uint8_t kSettingsCommand[3] = {0xE0, 0xDA, 0x01};
    prependFrame(packet, static_cast<uint32_t>(itemsLength) + 4, kSettingsCommand);
    return itemsLength + 7;
}

int32_t WirelessConfigurator::wrapPassThrough(std::vector<uint8_t>& bytes, int32_t innerLength)
{
    static const uint8_t kPassThroughCommand[3] = {0xE0, 0x63, 0x02};
    uint8_t innerLengthField[2];
    toBigEndian(static_cast<uint32_t>(innerLength), innerLengthField, 2);
    bytes.insert(bytes.begin(), innerLengthField, innerLengthField + 2);
    prependFrame(bytes, static_cast<uint32_t>(innerLength) + 6, kPassThroughCommand);
    return innerLength + 9;
}

std::vector<uint8_t> WirelessConfigurator::prepareReadRequest(uint8_t group, uint8_t field) const
{
    const uint8_t readRequest[9] = {kStartByte, 0x00, 0x06, kRequestFlags, 0xE0, 0xD8, 0x00, group, field};
    return prepareFixedRequest(readRequest, sizeof readRequest);
}

std::vector<uint8_t> WirelessConfigurator::prepareFixedRequest(const uint8_t* request, int32_t length) const
{
    // Built in a scratch vector: `packet` keeps the last settings request.
    std::vector<uint8_t> scratch(request, request + length);
    if (passThrough) {
        wrapPassThrough(scratch, length);
    }
    return scratch;
}

std::vector<uint8_t> WirelessConfigurator::finishSettingsRequest(int32_t itemsLength)
{
    int32_t length = wrapSettings(itemsLength);
    if (passThrough) {
        length = wrapPassThrough(packet, length);
    }
    return std::vector<uint8_t>(packet.begin(), packet.begin() + length);
}

int32_t WirelessConfigurator::appendNumericItem(uint8_t group, uint8_t field, uint32_t value)
{
    uint8_t item[kItemHeaderSize + 4];
    buildItemHeader(item, 4, field, group);
    toBigEndian(value, item + kItemHeaderSize, 4);
    return appendBytes(sizeof item, item);
}

int32_t WirelessConfigurator::appendFlagItem(uint8_t group, uint8_t field, uint8_t flag)
{
    const uint8_t item[kItemHeaderSize + 1] = {group, field, 0x00, 0x00, 0x01, flag};
    return appendBytes(sizeof item, item);
}

int32_t WirelessConfigurator::appendTextItem(uint8_t group, uint8_t field, const std::string& text,
                                             size_t maxValueLength, bool withZero)
{
    // The value length field has 16 bits, so no value can be longer than that.
    const size_t limit = std::min<size_t>(maxValueLength, 0xFFFF);
    const size_t zeroBytes = withZero ? 1 : 0;
    const size_t valueLength = std::min(text.size() + zeroBytes, limit);
    const size_t characters = valueLength - zeroBytes;

    std::vector<uint8_t> item(kItemHeaderSize + valueLength, 0);  // the zero byte is already there
    buildItemHeader(item.data(), static_cast<uint16_t>(valueLength), field, group);
    std::copy(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(characters), item.begin() + kItemHeaderSize);
    return appendBytes(static_cast<int32_t>(item.size()), item.data());
}

int WirelessConfigurator::sendNPA(const uint8_t* bytes, int32_t length, int timeLimitSeconds)
{
    static const uint8_t kNothing[1] = {0};
    if (bytes == nullptr || length < 0) {
        bytes = kNothing;  // an empty hex file still makes one exchange, with no bytes
        length = 0;
    }
    std::vector<uint8_t> answer;
    const int32_t count = npaChannel->exchangeNPA(bytes, length, answer, timeLimitSeconds);
    std::fprintf(stderr, "D [CVL] sendNPA response (%d bytes)\n", count);
    hexDump(answer.data(), count);
    return 0;
}
