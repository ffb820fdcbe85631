#include "sim/wire/Request.h"

#include "sim/wire/CertMgrCall.h"
#include "sim/wire/NpaPacket.h"

namespace corvelsim {

namespace {

const uint8_t kReadCommand[] = {0xE0, 0xD8, 0x00};
const uint8_t kSettingsCommand[] = {0xE0, 0xDA, 0x01};
const uint8_t kEnvelopeCommand[] = {0xE0, 0x63, 0x02};
const uint8_t kCertMgrCommand[] = {0xE0, 0xC0, 0x03};
constexpr size_t kEnvelopeHeader = 9;  // A5 len16 50 E0 63 02 innerLen16

bool hasCommand(const Bytes& packet, const uint8_t (&command)[3])
{
    return packet.size() >= 7 && packet[4] == command[0] && packet[5] == command[1] && packet[6] == command[2];
}

Bytes commandOf(const Bytes& packet)
{
    if (packet.size() <= kContentOffset) return {};
    size_t end = packet.size() < 7 ? packet.size() : 7;
    return Bytes(packet.begin() + kContentOffset, packet.begin() + long(end));
}

// A plain (not enveloped) read or settings packet.
void decodeInner(const Bytes& packet, Request& request)
{
    request.command = commandOf(packet);
    if (hasCommand(packet, kReadCommand)) {
        if (packet.size() != 9) {
            request.problem = "read request of " + std::to_string(packet.size()) + " bytes";
            return;
        }
        request.kind = RequestKind::Read;
        request.group = packet[7];
        request.field = packet[8];
        return;
    }
    if (hasCommand(packet, kSettingsCommand)) {
        request.kind = RequestKind::Settings;
        request.itemsWellFormed = decodeItems(packet.data() + 7, packet.size() - 7, request.items);
        if (!request.itemsWellFormed) request.problem = "malformed items";
        return;
    }
    request.problem = packet.size() < 7 ? "packet too short" : "unknown command";
}

}  // namespace

const char* kindName(RequestKind kind)
{
    switch (kind) {
    case RequestKind::Read: return "read";
    case RequestKind::Settings: return "settings";
    case RequestKind::CertMgr: return "certmgr";
    case RequestKind::Unknown: break;
    }
    return "unknown";
}

bool decodeItems(const uint8_t* body, size_t size, std::vector<Item>& items)
{
    items.clear();
    size_t at = 0;
    while (at < size) {
        if (size - at < 5) return false;
        size_t valueLength = readBE16(body + at + 3);
        if (size - at - 5 < valueLength) return false;
        Item item;
        item.group = body[at];
        item.field = body[at + 1];
        item.value.assign(body + at + 5, body + at + 5 + valueLength);
        items.push_back(std::move(item));
        at += 5 + valueLength;
    }
    return !items.empty();
}

Request decodePacket(const Bytes& packet)
{
    Request request;
    request.raw = packet;
    if (!hasCommand(packet, kEnvelopeCommand)) {
        decodeInner(packet, request);
        return request;
    }

    request.envelope = true;
    request.command = commandOf(packet);
    if (packet.size() < kEnvelopeHeader) {
        request.problem = "envelope too short";
        return request;
    }
    size_t innerLength = readBE16(&packet[7]);
    Bytes inner(packet.begin() + kEnvelopeHeader, packet.end());
    if (inner.size() != innerLength || inner.size() < 3 || inner[0] != kStartByte ||
        readBE16(&inner[1]) + 3 != inner.size()) {
        request.problem = "envelope does not hold one complete packet";
        return request;
    }
    if (hasCommand(inner, kEnvelopeCommand)) {
        request.problem = "envelope inside an envelope";
        return request;
    }
    decodeInner(inner, request);
    return request;
}

bool isCertMgrOpening(const Bytes& packet) { return packet.size() > kFlagsOffset && packet[kFlagsOffset] == kFlagDrop; }

bool isCertMgrCall(const Bytes& packet) { return hasCommand(packet, kCertMgrCommand); }

Request decodeCertMgr(const Bytes& opening, const Bytes& call)
{
    Request request;
    request.kind = RequestKind::CertMgr;
    request.raw = opening;
    request.raw.insert(request.raw.end(), call.begin(), call.end());
    request.command = commandOf(call);
    // After the command bytes come 00 01 and the XML text.
    if (call.size() >= 9) request.xml.assign(call.begin() + 9, call.end());
    request.call = parseCertMgrCall(request.xml);
    if (request.call.method.empty()) request.problem = "no method name in the call";
    return request;
}

}  // namespace corvelsim
