#include "sim/process/RequestLog.h"

namespace corvelsim {

namespace {

bool printableText(const Bytes& value, std::string& text)
{
    size_t end = value.size();
    if (end > 0 && value[end - 1] == 0) --end;  // a terminating zero is part of a text
    for (size_t i = 0; i < end; ++i) {
        if (value[i] < 0x20 || value[i] > 0x7E) return false;
    }
    text.assign(value.begin(), value.begin() + long(end));
    return end > 0;
}

std::string itemJson(const Item& item)
{
    std::string json = "{\"group\":\"" + hexByte(item.group) + "\",\"field\":\"" + hexByte(item.field) +
                       "\",\"length\":" + std::to_string(item.value.size()) + ",\"value\":\"" + toHex(item.value) +
                       "\"";
    std::string text;
    if (printableText(item.value, text)) json += ",\"text\":" + jsonString(text);
    return json + "}";
}

// A Base64 file is shown by its size and first characters; long texts are cut.
std::string paramText(const CertParam& param)
{
    constexpr size_t kShown = 24;
    if (param.type == "BinaryElem")
        return "[" + std::to_string(param.value.size()) + " Base64 characters] " + param.value.substr(0, kShown) +
               (param.value.size() > kShown ? "..." : "");
    if (param.value.size() > 256) return param.value.substr(0, 256) + "...";
    return param.value;
}

// The port and where the request came from.
std::string routeJson(const LogEntry& entry)
{
    if (entry.usbAddress.empty()) return std::to_string(entry.port) + ",\"route\":\"lp\"";
    std::string sizes;
    for (size_t size : entry.bulkOut) sizes += (sizes.empty() ? "" : ",") + std::to_string(size);
    return "\"" + entry.usbAddress + "\",\"route\":\"usb\",\"bulk_out\":\"" + sizes + "\"";
}

}  // namespace

std::string jsonString(const std::string& text)
{
    std::string json = "\"";
    for (unsigned char c : text) {
        switch (c) {
        case '"': json += "\\\""; break;
        case '\\': json += "\\\\"; break;
        case '\n': json += "\\n"; break;
        case '\r': json += "\\r"; break;
        case '\t': json += "\\t"; break;
        default:
            if (c < 0x20 || c >= 0x7F) {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\u%04X", c);
                json += escape;
            } else {
                json += char(c);
            }
        }
    }
    return json + "\"";
}

std::string formatLogEntry(int seq, const LogEntry& entry)
{
    const Request& request = *entry.request;
    std::string json = "{\"seq\":" + std::to_string(seq) + ",\"port\":" + routeJson(entry) +
                       ",\"serial\":" + jsonString(entry.serial) + ",\"kind\":\"" + kindName(request.kind) +
                       "\",\"envelope\":" + (request.envelope ? "true" : "false") + ",\"raw\":\"" + toHex(request.raw) +
                       "\"";
    switch (request.kind) {
    case RequestKind::Read:
        json += ",\"group\":\"" + hexByte(request.group) + "\",\"field\":\"" + hexByte(request.field) + "\"";
        break;
    case RequestKind::Settings:
        json += ",\"items\":[";
        for (size_t i = 0; i < request.items.size(); ++i) {
            json += (i ? "," : "") + itemJson(request.items[i]);
        }
        json += std::string("],\"accepted\":") + (entry.accepted ? "true" : "false");
        break;
    case RequestKind::CertMgr:
        json += ",\"method\":" + jsonString(request.call.method) + ",\"params\":{";
        for (size_t i = 0; i < request.call.params.size(); ++i) {
            const CertParam& param = request.call.params[i];
            json += (i ? "," : "") + jsonString(param.name) + ":" + jsonString(paramText(param));
        }
        json += "}";
        if (entry.answered) json += ",\"status_code\":" + std::to_string(entry.certStatus);
        break;
    case RequestKind::Unknown: break;
    }
    if (!request.problem.empty()) json += ",\"problem\":" + jsonString(request.problem);
    json += std::string(",\"answered\":") + (entry.answered ? "true" : "false");
    json += ",\"answer\":\"" + toHex(entry.answer) + "\",\"faults\":[";
    for (size_t i = 0; i < entry.faults.size(); ++i) json += (i ? "," : "") + jsonString(entry.faults[i]);
    json += "]";
    if (entry.delayMs > 0) json += ",\"delay_ms\":" + std::to_string(entry.delayMs);
    return json + "}";
}

RequestLog::~RequestLog()
{
    if (m_File) std::fclose(m_File);
}

bool RequestLog::open(const std::string& path)
{
    m_File = std::fopen(path.c_str(), "ae");
    return m_File != nullptr;
}

void RequestLog::write(const LogEntry& entry)
{
    ++m_Seq;
    if (!m_File) return;
    std::string line = formatLogEntry(m_Seq, entry);
    std::fprintf(m_File, "%s\n", line.c_str());
    std::fflush(m_File);
}

}  // namespace corvelsim
