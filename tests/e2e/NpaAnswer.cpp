#include "tests/e2e/NpaAnswer.h"

#include <algorithm>
#include <cstdio>

namespace e2e {

std::string utilityHexDump(const Bytes& bytes)
{
    std::string text;
    size_t width = std::min<size_t>(16, bytes.size());
    char cell[4];
    for (size_t at = 0; at < bytes.size(); at += width) {
        size_t n = std::min(width, bytes.size() - at);
        for (size_t i = 0; i < n; ++i) {
            std::snprintf(cell, sizeof cell, "%02X ", bytes[at + i]);
            text += cell;
        }
        text += std::string(3 * (width - n), ' ') + "|";
        for (size_t i = 0; i < n; ++i) {
            uint8_t c = bytes[at + i];
            text += (c >= 0x20 && c <= 0x7E) ? char(c) : '.';
        }
        text += "\n";
    }
    return text;
}

Bytes keptContent(const Bytes& sent)
{
    Bytes kept;
    size_t at = 0;
    while (at < sent.size()) {
        if (sent[at++] != 0xA5) continue;
        if (sent.size() - at < 2) break;
        size_t length = size_t(sent[at]) << 8 | sent[at + 1];
        at += 2;
        if (sent.size() - at < length) break;  // incomplete: dropped
        if (length == 0) continue;
        uint8_t flags = sent[at];
        if (flags & 0x80) break;
        kept.insert(kept.end(), sent.begin() + long(at + 1), sent.begin() + long(at + length));
        at += length;
        if (!(flags & 0x20)) break;
    }
    return kept;
}

std::string npaTrace(const Bytes& request, const Bytes& kept)
{
    return "D [CVL] NPA data: " + std::to_string(request.size()) + " bytes\n" + utilityHexDump(request) +
           "D [CVL] sendNPA response (" + std::to_string(kept.size()) + " bytes)\n" + utilityHexDump(kept);
}

}  // namespace e2e
