#include "ctl/Json.h"

#include <cstdint>
#include <cstdio>

namespace corvelctl {

namespace {

const char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD in UTF-8

// The length of the well-formed UTF-8 sequence at the start of `text`, or 0
// when it is not one (stray continuation, overlong form, surrogate, beyond
// U+10FFFF, cut short).
std::size_t utf8SequenceLength(std::string_view text)
{
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t lead = byte(0);
    std::size_t length = 0;
    std::uint8_t low = 0x80, high = 0xBF;  // the bounds of the second byte
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        if (lead == 0xE0) low = 0xA0;   // overlong
        if (lead == 0xED) high = 0x9F;  // surrogates
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        if (lead == 0xF0) low = 0x90;   // overlong
        if (lead == 0xF4) high = 0x8F;  // beyond U+10FFFF
    } else {
        return 0;
    }
    if (text.size() < length) return 0;
    if (byte(1) < low || byte(1) > high) return 0;
    for (std::size_t i = 2; i < length; ++i) {
        if (byte(i) < 0x80 || byte(i) > 0xBF) return 0;
    }
    return length;
}

}  // namespace

void appendJsonString(std::string& out, std::string_view text)
{
    out += '"';
    std::size_t i = 0;
    while (i < text.size()) {
        const auto c = static_cast<unsigned char>(text[i]);
        if (c >= 0x80) {
            const std::size_t length = utf8SequenceLength(text.substr(i));
            if (length == 0) {
                out += kReplacement;
                ++i;
            } else {
                out.append(text.substr(i, length));
                i += length;
            }
            continue;
        }
        switch (c) {
        case '"': out += "\\\""; break;
        case '\\': out += "\\\\"; break;
        case '\b': out += "\\b"; break;
        case '\f': out += "\\f"; break;
        case '\n': out += "\\n"; break;
        case '\r': out += "\\r"; break;
        case '\t': out += "\\t"; break;
        default:
            if (c < 0x20 || c == 0x7F) {
                char escaped[8];
                std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
                out += escaped;
            } else {
                out += static_cast<char>(c);
            }
        }
        ++i;
    }
    out += '"';
}

void JsonWriter::beforeValue()
{
    if (m_AfterKey) {
        m_AfterKey = false;
        return;
    }
    if (!m_HasItem.empty()) {
        if (m_HasItem.back()) m_Text += ", ";
        m_HasItem.back() = true;
    }
}

void JsonWriter::open(char bracket)
{
    beforeValue();
    m_Text += bracket;
    m_HasItem.push_back(false);
}

void JsonWriter::close(char bracket)
{
    m_HasItem.pop_back();
    m_Text += bracket;
}

void JsonWriter::beginObject() { open('{'); }
void JsonWriter::endObject() { close('}'); }
void JsonWriter::beginArray() { open('['); }
void JsonWriter::endArray() { close(']'); }

void JsonWriter::key(std::string_view name)
{
    beforeValue();
    appendJsonString(m_Text, name);
    m_Text += ": ";
    m_AfterKey = true;
}

void JsonWriter::string(std::string_view value)
{
    beforeValue();
    appendJsonString(m_Text, value);
}

void JsonWriter::integer(long long value)
{
    beforeValue();
    m_Text += std::to_string(value);
}

void JsonWriter::boolean(bool value)
{
    beforeValue();
    m_Text += value ? "true" : "false";
}

void JsonWriter::null()
{
    beforeValue();
    m_Text += "null";
}

}  // namespace corvelctl
