// What the utility asked for: one request decoded from the packet(s) it wrote.
#pragma once

#include <string>
#include <vector>

#include "sim/wire/Bytes.h"
#include "sim/wire/CertMgrCall.h"

namespace corvelsim {

enum class RequestKind { Read, Settings, CertMgr, Unknown };

// "read", "settings", "certmgr", "unknown" (the request log's spelling).
const char* kindName(RequestKind kind);

// One setting item: group, field, 0x00, 16-bit value length, value.
struct Item {
    uint8_t group = 0;
    uint8_t field = 0;
    Bytes value;
};

struct Request {
    RequestKind kind = RequestKind::Unknown;
    bool envelope = false;  // came inside a pass-through envelope
    Bytes raw;              // every byte of the request, as written
    Bytes command;          // the command bytes of the (inner) packet, up to 3
    uint8_t group = 0;      // read requests
    uint8_t field = 0;
    std::vector<Item> items;  // settings requests
    bool itemsWellFormed = true;
    std::string xml;      // certificate-manager requests
    CertMgrCall call;     // ... decoded
    std::string problem;  // why a request is unknown or malformed
};

// Decodes one complete packet: a read or settings request, plain or inside a
// pass-through envelope; anything else is Unknown with a reason.
Request decodePacket(const Bytes& packet);

// True for the 0x80-flagged packet that opens a certificate-manager request.
bool isCertMgrOpening(const Bytes& packet);

// True for a packet whose command bytes are E0 C0 03 (a certificate-manager call).
bool isCertMgrCall(const Bytes& packet);

// Decodes the two packets of a certificate-manager request.
Request decodeCertMgr(const Bytes& opening, const Bytes& call);

// Decodes the items of a settings request body; false when they do not fill
// the body exactly.
bool decodeItems(const uint8_t* body, size_t size, std::vector<Item>& items);

}  // namespace corvelsim
