#include "sim/StateFile.h"

#include <cstdio>
#include <fstream>
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
        if (c == 0) text += "\\0";
        else if (c == '\\') text += "\\\\";
        else if (c == '"') text += "\\\"";
        else if (isPrintable(c)) text += char(c);
        else text += "\\x" + hexByte(c);
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
        if (e == '0') out.push_back(0);
        else if (e == '\\' || e == '"') out.push_back(uint8_t(e));
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
    if (text.size() != 5 || text[2] != '/' || !fromHex(text.substr(0, 2), group) ||
        !fromHex(text.substr(3, 2), field))
        return false;
    key = fieldKey(group[0], field[0]);
    return true;
}

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
    out << "# corvelsim printer state: key=value lines, '#' starts a comment.\n"
        << "# Settings are group/field=value: \"text\" (C escapes), u32:N, u8:N or hex:HEX.\n"
        << "joined=" << (state.joined ? 1 : 0) << "\n"
        << "connection_polls=" << state.connectionPolls << "\n"
        << "ready_polls=" << state.readyPolls << "\n"
        << "resets=" << state.resets << "\n";
    for (const auto& [key, value] : state.items) {
        if (const char* name = fieldName(key)) out << "# " << name << "\n";
        out << hexByte(uint8_t(key >> 8)) << "/" << hexByte(uint8_t(key)) << "=" << formatValue(value)
            << "\n";
    }
    return out.str();
}

void parseState(const std::string& text, PrinterState& state, std::vector<std::string>& problems)
{
    std::istringstream in(text);
    std::string line;
    int lineNumber = 0;
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
        } else if (parseFieldKey(key, field)) {
            ok = parseValue(value, bytes) && bytes.size() <= 0xFFFF;
            if (ok) state.items[field] = bytes;
        } else {
            ok = false;
        }
        if (!ok) problems.push_back("line " + std::to_string(lineNumber) + " ignored: " + line);
    }
}

bool loadStateFile(const std::string& path, PrinterState& state, std::vector<std::string>& problems)
{
    std::ifstream in(path, std::ios::binary);
    if (!in) return true;  // no file yet: a fresh printer
    std::ostringstream text;
    text << in.rdbuf();
    parseState(text.str(), state, problems);
    return true;
}

bool saveStateFile(const std::string& path, const PrinterState& state)
{
    std::string temporary = path + ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (!out) return false;
        out << formatState(state);
        if (!out.flush()) return false;
    }
    return std::rename(temporary.c_str(), path.c_str()) == 0;
}

}  // namespace corvelsim
