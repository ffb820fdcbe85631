// The NPA packet format in one place: the start byte, flags and command bytes,
// the groups and fields this utility reads and writes, and the small builders
// and finders every request and answer goes through.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace npa {

constexpr uint8_t kStartByte = 0xA5;

// The flags byte follows the start byte and the 2-byte length field.
constexpr size_t kFlagsOffset = 3;
constexpr uint8_t kFlagsRequest = 0x50;
constexpr uint8_t kFlagDropAndEnd = 0x80;   // content not kept, answer ends
constexpr uint8_t kFlagMoreFollows = 0x20;  // a further packet follows
constexpr uint8_t kFlagsRefused = 0xD4;     // the printer refuses the request as framed

using Command = uint8_t[3];
constexpr Command kSettingsCommand = {0xE0, 0xDA, 0x01};
constexpr Command kReadCommand = {0xE0, 0xD8, 0x00};
constexpr Command kPassThroughCommand = {0xE0, 0x63, 0x02};
constexpr Command kCertManagerCommand = {0xE0, 0xC0, 0x03};

// One setting or reading of the printer: a group and a field in it.
struct Key {
    uint8_t group;
    uint8_t field;
};

constexpr Key kMode{0x28, 0x02};
constexpr Key kChannel{0x28, 0x05};
constexpr Key kSSID{0x28, 0x08};
constexpr Key kWEPKey1{0x28, 0x09};     // keys 2 to 4 follow in the odd fields 0B, 0D, 0F; also the WEP password
constexpr Key kPassphrase{0x28, 0x11};  // the pre-shared key or the password of WPA
constexpr Key kConnectionState{0x28, 0x15};
constexpr Key kWEPTransmitKey{0x28, 0x1F};
constexpr Key kSecurity{0x28, 0x22};
constexpr Key kWEPAuthMode{0x28, 0x23};
constexpr Key kEncryption{0x28, 0x26};
constexpr Key k8021xUser{0x2A, 0x02};
constexpr Key k8021xPassword{0x2A, 0x03};
constexpr Key kCertOrganization{0x2A, 0x06};
constexpr Key kCertCommonName{0x2A, 0x0A};
constexpr Key kAuthExtensions{0x2A, 0x14};  // six one-byte flags in the fields 14 to 19
constexpr Key kInnerAuth{0x2A, 0x1A};
constexpr Key kAuthStatus{0x2A, 0x1D};
constexpr Key kValidateCertificate{0x2A, 0x24};
constexpr Key kReset{0x06, 0x14};
constexpr Key kDeviceState{0x06, 0x1F};
constexpr Key kIPv4Address{0x0A, 0x02};

// A5, the length of what follows the length field, the request flags, the
// command bytes, then `body`.
std::vector<uint8_t> frameRequest(const Command& command, const std::vector<uint8_t>& body);

// Items: group, field, 00, the 2-byte value length, the value. Each appends
// one item to `items` and returns the count of bytes appended.
size_t appendNumericItem(std::vector<uint8_t>& items, Key key, uint32_t value);  // 4 bytes
size_t appendFlagItem(std::vector<uint8_t>& items, Key key, uint8_t flag);       // 1 byte
// The text, cut to `maxValueLength` bytes (and to the 16-bit length field);
// `withZero` ends the value with a zero byte inside that limit.
size_t appendTextItem(std::vector<uint8_t>& items, Key key, const std::string& text, size_t maxValueLength,
                      bool withZero);

std::vector<uint8_t> settingsRequest(const std::vector<uint8_t>& items);
std::vector<uint8_t> readRequest(Key key);
// The settings request that resets the printer's network interface.
std::vector<uint8_t> resetRequest();
// The pass-through envelope: the inner request's 2-byte length, then the request.
std::vector<uint8_t> wrapPassThrough(const std::vector<uint8_t>& request);

// Whether an answer of `count` bytes carries the refusal flags.
bool isRefused(const uint8_t* answer, size_t count);

// Where a value sits inside a collected answer.
struct ValueSpan {
    bool found = false;
    size_t offset = 0;
    size_t length = 0;  // cut at the end of the answer
};

// Finds the inner answer packet to a read of `key`: A5, a 2-byte length, the
// repeated request (flags, read command, key), the 2-byte value length, then
// the value. Its 11 header bytes must lie inside the answer; a value that runs
// past the end of the answer is cut there.
ValueSpan findReadValue(const std::vector<uint8_t>& answer, Key key);

}  // namespace npa
