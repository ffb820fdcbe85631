#include "sim/process/StateFile.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <sstream>

namespace corvelsim {

namespace {

// Names of the fields the utility knows, written as comments for the reader.
const char* fieldName(unsigned key)
{
    switch (key) {
    case fieldKey(0x28, 0x02): return "mode (1 ad-hoc)";
    case fieldKey(0x28, 0x05): return "channel";
    case fieldKey(0x28, 0x08): return "SSID";
    case fieldKey(0x28, 0x09): return "WEP key 1 / WEP passphrase";
    case fieldKey(0x28, 0x0B): return "WEP key 2";
    case fieldKey(0x28, 0x0D): return "WEP key 3";
    case fieldKey(0x28, 0x0F): return "WEP key 4";
    case fieldKey(0x28, 0x11): return "pre-shared key";
    case fieldKey(0x28, 0x1F): return "WEP transmit key";
    case fieldKey(0x28, 0x22): return "security (0 none, 1 WEP, 2 WPA, 3 802.1x, 4 WPA2)";
    case fieldKey(0x28, 0x23): return "WEP authentication mode";
    case fieldKey(0x28, 0x26): return "encryption";
    case fieldKey(0x2A, 0x02): return "802.1x user";
    case fieldKey(0x2A, 0x03): return "802.1x password";
    case fieldKey(0x2A, 0x06): return "certificate organization";
    case fieldKey(0x2A, 0x0A): return "certificate common name";
    case fieldKey(0x2A, 0x1A): return "802.1x inner authentication";
    case fieldKey(0x2A, 0x1D): return "802.1x status (set by hand to override)";
    case fieldKey(0x2A, 0x24): return "validate certificate";
    default: break;
    }
    if (key >= fieldKey(0x2A, 0x14) && key <= fieldKey(0x2A, 0x19)) return "EAP extension flag";
    return nullptr;
}

bool isPrintable(uint8_t c) { return c >= 0x20 && c <= 0x7E; }

// Text when every byte but a final zero is printable.
bool looksLikeText(const Bytes& value)
{
    if (value.empty()) return true;
    size_t end = value.back() == 0 ? value.size() - 1 : value.size();
    if (end == 0) return value.size() == 1;
    for (size_t i = 0; i < end; ++i) {
        if (!isPrintable(value[i])) return false;
    }
    return true;
}

std::string quoted(const Bytes& value)
{
    std::string text = "\"";
    for (uint8_t c : value) {
        if (c == 0)
            text += "\\0";
        else if (c == '\\')
            text += "\\\\";
        else if (c == '"')
            text += "\\\"";
        else if (isPrintable(c))
            text += char(c);
        else
            text += "\\x" + hexByte(c);
    }
    return text + "\"";
}

bool unquote(const std::string& text, Bytes& value)
{
    if (text.size() < 2 || text.front() != '"' || text.back() != '"') return false;
    Bytes out;
    for (size_t i = 1; i + 1 < text.size(); ++i) {
        char c = text[i];
        if (c != '\\') {
            out.push_back(uint8_t(c));
            continue;
        }
        if (i + 2 >= text.size()) return false;
        char e = text[++i];
        if (e == '0')
            out.push_back(0);
        else if (e == '\\' || e == '"')
            out.push_back(uint8_t(e));
        else if (e == 'x' && i + 3 < text.size()) {
            Bytes byte;
            if (!fromHex(text.substr(i + 1, 2), byte)) return false;
            out.push_back(byte[0]);
            i += 2;
        } else {
            return false;
        }
    }
    value = std::move(out);
    return true;
}

bool parseNumber(const std::string& text, unsigned long max, unsigned long& number)
{
    if (text.empty() || text.size() > 10) return false;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
    }
    number = std::stoul(text);
    return number <= max;
}

std::string trim(const std::string& text)
{
    size_t begin = text.find_first_not_of(" \t\r");
    if (begin == std::string::npos) return {};
    size_t end = text.find_last_not_of(" \t\r");
    return text.substr(begin, end - begin + 1);
}

// "28/08" to its key.
bool parseFieldKey(const std::string& text, unsigned& key)
{
    Bytes group, field;
    if (text.size() != 5 || text[2] != '/' || !fromHex(text.substr(0, 2), group) || !fromHex(text.substr(3, 2), field))
        return false;
    key = fieldKey(group[0], field[0]);
    return true;
}

std::string quotedText(const std::string& text) { return quoted(Bytes(text.begin(), text.end())); }

bool unquoteText(const std::string& value, std::string& text)
{
    Bytes bytes;
    if (value.empty() || value.front() != '"' || !unquote(value, bytes)) return false;
    text.assign(bytes.begin(), bytes.end());
    return true;
}

const std::pair<const char*, std::string Subject::*> kSubjectFields[] = {
    {"O", &Subject::O}, {"OU", &Subject::OU}, {"C", &Subject::C},  {"ST", &Subject::ST},
    {"L", &Subject::L}, {"CN", &Subject::CN}, {"AN", &Subject::AN}};

bool parseSubjectField(const std::string& name, const std::string& value, Subject& subject)
{
    for (const auto& [field, member] : kSubjectFields) {
        if (name == field) return unquoteText(value, subject.*member);
    }
    return false;
}

// The "pending.N.x", "cert.N.x" and "ca.N.x" lines, gathered by kind and
// number until every line is read.
class StoreRecords {
public:
    bool add(const std::string& key, const std::string& value)
    {
        size_t firstDot = key.find('.');
        size_t secondDot = key.find('.', firstDot == std::string::npos ? 0 : firstDot + 1);
        if (secondDot == std::string::npos) return false;
        std::string kind = key.substr(0, firstDot);
        std::string part = key.substr(secondDot + 1);
        unsigned long number = 0;
        if (!parseNumber(key.substr(firstDot + 1, secondDot - firstDot - 1), kMaxStoreEntries, number) || number == 0)
            return false;
        const std::vector<std::string>* parts = partsOf(kind);
        if (parts == nullptr || std::find(parts->begin(), parts->end(), part) == parts->end()) return false;
        std::string text;
        if (!unquoteText(value, text)) return false;
        m_Records[kind][number][part] = text;
        return true;
    }

    void store(CertStore& certs, std::vector<std::string>& problems)
    {
        for (auto& [kind, numbered] : m_Records) {
            const std::vector<std::string>& parts = *partsOf(kind);
            for (auto& [number, record] : numbered) {
                if (record.size() != parts.size()) {
                    problems.push_back(kind + "." + std::to_string(number) + " lacks some of its lines");
                    continue;
                }
                if (kind == "pending")
                    certs.pending.push_back({record["friendly_name"], record["key"], record["request"]});
                if (kind == "cert")
                    certs.signedCerts.push_back({record["friendly_name"], record["pem"], record["key"]});
                if (kind == "ca")
                    certs.cas.push_back({record["name"], record["file"], record["common_name"], record["pem"]});
            }
        }
    }

private:
    static const std::vector<std::string>* partsOf(const std::string& kind)
    {
        static const std::map<std::string, std::vector<std::string>> kParts = {
            {"pending", {"friendly_name", "key", "request"}},
            {"cert", {"friendly_name", "pem", "key"}},
            {"ca", {"name", "file", "common_name", "pem"}}};
        auto it = kParts.find(kind);
        return it == kParts.end() ? nullptr : &it->second;
    }

    std::map<std::string, std::map<unsigned long, std::map<std::string, std::string>>> m_Records;
};

}  // namespace

std::string formatValue(const Bytes& value)
{
    if (!value.empty() && looksLikeText(value)) return quoted(value);
    if (value.size() == 4) {
        unsigned long number = (unsigned long)value[0] << 24 | value[1] << 16 | value[2] << 8 | value[3];
        return "u32:" + std::to_string(number);
    }
    if (value.size() == 1) return "u8:" + std::to_string(value[0]);
    return "hex:" + toHex(value);
}

bool parseValue(const std::string& text, Bytes& value)
{
    unsigned long number = 0;
    if (!text.empty() && text.front() == '"') return unquote(text, value);
    if (text.rfind("u32:", 0) == 0) {
        if (!parseNumber(text.substr(4), 0xFFFFFFFFul, number)) return false;
        value = {uint8_t(number >> 24), uint8_t(number >> 16), uint8_t(number >> 8), uint8_t(number)};
        return true;
    }
    if (text.rfind("u8:", 0) == 0) {
        if (!parseNumber(text.substr(3), 0xFF, number)) return false;
        value = {uint8_t(number)};
        return true;
    }
    if (text.rfind("hex:", 0) == 0) return fromHex(text.substr(4), value);
    return false;
}

std::string formatState(const PrinterState& state)
{
    std::ostringstream out;
    out << kStateFileHeader << "\n"
        << "# The simulated printer's state: key=value lines, '#' starts a comment (comments are not kept).\n"
        << "# Settings are group/field=value: \"text\" (C escapes), u32:N, u8:N or hex:HEX.\n"
        << "# It holds private keys: keep it private (corvelsim writes it with mode 0600).\n"
        << "joined=" << (state.joined ? 1 : 0) << "\n"
        << "connection_polls=" << state.connectionPolls << "\n"
        << "ready_polls=" << state.readyPolls << "\n"
        << "resets=" << state.resets << "\n"
        << "# the subject readCertDefaults answers\n";
    for (const auto& [name, member] : kSubjectFields)
        out << "default_x509_" << name << "=" << quotedText(state.defaultSubject.*member) << "\n";
    for (const auto& [key, value] : state.items) {
        if (const char* name = fieldName(key)) out << "# " << name << "\n";
        out << hexByte(uint8_t(key >> 8)) << "/" << hexByte(uint8_t(key)) << "=" << formatValue(value) << "\n";
    }
    const CertStore& certs = state.certs;
    for (size_t i = 0; i < certs.pending.size(); ++i) {
        std::string prefix = "pending." + std::to_string(i + 1) + ".";
        out << "# key waiting for its signed certificate\n"
            << prefix << "friendly_name=" << quotedText(certs.pending[i].friendlyName) << "\n"
            << prefix << "key=" << quotedText(certs.pending[i].keyPem) << "\n"
            << prefix << "request=" << quotedText(certs.pending[i].requestPem) << "\n";
    }
    for (size_t i = 0; i < certs.signedCerts.size(); ++i) {
        std::string prefix = "cert." + std::to_string(i + 1) + ".";
        out << "# installed signed certificate (the last one is in use)\n"
            << prefix << "friendly_name=" << quotedText(certs.signedCerts[i].friendlyName) << "\n"
            << prefix << "pem=" << quotedText(certs.signedCerts[i].certPem) << "\n"
            << prefix << "key=" << quotedText(certs.signedCerts[i].keyPem) << "\n";
    }
    for (size_t i = 0; i < certs.cas.size(); ++i) {
        std::string prefix = "ca." + std::to_string(i + 1) + ".";
        out << "# installed CA certificate\n"
            << prefix << "name=" << quotedText(certs.cas[i].name) << "\n"
            << prefix << "file=" << quotedText(certs.cas[i].fileName) << "\n"
            << prefix << "common_name=" << quotedText(certs.cas[i].commonName) << "\n"
            << prefix << "pem=" << quotedText(certs.cas[i].certPem) << "\n";
    }
    return out.str();
}

int stateFileVersion(const std::string& text)
{
    std::string first = text.substr(0, text.find('\n'));
    if (first == kStateFileHeaderV1) return 1;
    const std::string prefix = "# corvelsim state v";
    if (first.rfind(prefix, 0) != 0) return 0;
    unsigned long version = 0;
    if (!parseNumber(first.substr(prefix.size()), 1000000, version) || version < 2) return 0;
    return int(version);
}

void parseState(const std::string& text, PrinterState& state, std::vector<std::string>& problems)
{
    std::istringstream in(text);
    std::string line;
    int lineNumber = 0;
    StoreRecords records;
    while (std::getline(in, line)) {
        ++lineNumber;
        line = trim(line);
        if (line.empty() || line[0] == '#') continue;
        size_t equals = line.find('=');
        std::string key = equals == std::string::npos ? line : trim(line.substr(0, equals));
        std::string value = equals == std::string::npos ? "" : trim(line.substr(equals + 1));
        unsigned long number = 0;
        unsigned field = 0;
        Bytes bytes;
        bool ok = equals != std::string::npos;
        if (!ok) {
        } else if (key == "joined") {
            ok = parseNumber(value, 1, number);
            if (ok) state.joined = number == 1;
        } else if (key == "connection_polls") {
            ok = parseNumber(value, 1000000, number);
            if (ok) state.connectionPolls = int(number);
        } else if (key == "ready_polls") {
            ok = parseNumber(value, 1000000, number);
            if (ok) state.readyPolls = int(number);
        } else if (key == "resets") {
            ok = parseNumber(value, 1000000, number);
            if (ok) state.resets = int(number);
        } else if (key.rfind("default_x509_", 0) == 0) {
            ok = parseSubjectField(key.substr(13), value, state.defaultSubject);
        } else if (parseFieldKey(key, field)) {
            ok = parseValue(value, bytes) && bytes.size() <= 0xFFFF;
            if (ok) state.items[field] = bytes;
        } else {
            ok = records.add(key, value);
        }
        if (!ok) problems.push_back("line " + std::to_string(lineNumber) + " cannot be read: " + line.substr(0, 80));
    }
    records.store(state.certs, problems);
}

}  // namespace corvelsim
