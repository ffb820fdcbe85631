// Reading a request back: its command, and where its items' values lie.
#include "npa/RequestDescription.h"

#include <algorithm>
#include <cstdio>

#include "npa/NpaFrame.h"

namespace npa {

namespace {

constexpr size_t kCommandOffset = kFlagsOffset + 1;
constexpr size_t kItemsOffset = kCommandOffset + 3;
constexpr size_t kItemHeader = 5;  // group, field, 00, 2-byte value length

bool hasCommand(const std::vector<uint8_t>& request, size_t at, const Command& command)
{
    return request.size() >= at + 3 && std::equal(command, command + 3, request.begin() + long(at));
}

// Where the inner request of a wrapped one starts (after the envelope's
// 2-byte length), or 0 for a plain request.
size_t innerStart(const std::vector<uint8_t>& request)
{
    return hasCommand(request, kCommandOffset, kPassThroughCommand) ? kItemsOffset + 2 : 0;
}

bool isSecret(uint8_t group, uint8_t field)
{
    const Key secrets[] = {kWEPKey1,
                           {kWEPKey1.group, uint8_t(kWEPKey1.field + 2)},
                           {kWEPKey1.group, uint8_t(kWEPKey1.field + 4)},
                           {kWEPKey1.group, uint8_t(kWEPKey1.field + 6)},
                           kPassphrase,
                           k8021xPassword};
    return std::any_of(std::begin(secrets), std::end(secrets),
                       [&](const Key& key) { return key.group == group && key.field == field; });
}

}  // namespace

std::string describeRequest(const std::vector<uint8_t>& request)
{
    const size_t start = innerStart(request);
    const std::string wrapped = start > 0 ? " in the pass-through envelope" : "";
    if (!request.empty() && request.size() > kFlagsOffset && request[kFlagsOffset] == kFlagDropAndEnd) {
        return "certificate-manager call";
    }
    if (hasCommand(request, start + kCommandOffset, kReadCommand) && request.size() >= start + kItemsOffset + 2) {
        char key[8];
        std::snprintf(key, sizeof key, "%02X:%02X", request[start + kItemsOffset], request[start + kItemsOffset + 1]);
        return "read " + std::string(key) + wrapped;
    }
    if (hasCommand(request, start + kCommandOffset, kSettingsCommand)) {
        size_t items = 0;
        for (size_t at = start + kItemsOffset; at + kItemHeader <= request.size();
             at += kItemHeader + ((size_t(request[at + 3]) << 8) | request[at + 4])) {
            ++items;
        }
        return "settings (" + std::to_string(items) + (items == 1 ? " item)" : " items)") + wrapped;
    }
    return "request of " + std::to_string(request.size()) + " bytes";
}

std::vector<uint8_t> maskSecrets(const std::vector<uint8_t>& request)
{
    std::vector<uint8_t> masked = request;
    const size_t start = innerStart(request);
    if (!hasCommand(request, start + kCommandOffset, kSettingsCommand)) {
        return masked;
    }
    size_t at = start + kItemsOffset;
    while (at + kItemHeader <= masked.size()) {
        const size_t length = (size_t(masked[at + 3]) << 8) | masked[at + 4];
        const size_t valueEnd = std::min(at + kItemHeader + length, masked.size());
        if (isSecret(masked[at], masked[at + 1])) {
            std::fill(masked.begin() + long(at + kItemHeader), masked.begin() + long(valueEnd), uint8_t('*'));
        }
        at += kItemHeader + length;
    }
    return masked;
}

}  // namespace npa
