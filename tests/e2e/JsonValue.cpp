#include "tests/e2e/JsonValue.h"

#include <cstdlib>

namespace e2e {

namespace {

const JsonValue kNull;

class Parser {
public:
    explicit Parser(const std::string& text) : m_Text(text) {}

    bool parseDocument(JsonValue& value)
    {
        if (!parseValue(value, 0)) return false;
        skipBlanks();
        return m_At == m_Text.size();
    }

private:
    void skipBlanks()
    {
        while (m_At < m_Text.size() && (m_Text[m_At] == ' ' || m_Text[m_At] == '\t' || m_Text[m_At] == '\n' ||
                                        m_Text[m_At] == '\r'))
            ++m_At;
    }

    bool take(char c)
    {
        skipBlanks();
        if (m_At < m_Text.size() && m_Text[m_At] == c) {
            ++m_At;
            return true;
        }
        return false;
    }

    bool takeWord(const char* word)
    {
        std::string w(word);
        if (m_Text.compare(m_At, w.size(), w) != 0) return false;
        m_At += w.size();
        return true;
    }

    bool parseString(std::string& out)
    {
        if (!take('"')) return false;
        while (m_At < m_Text.size()) {
            char c = m_Text[m_At++];
            if (c == '"') return true;
            if (c != '\\') {
                out += c;
                continue;
            }
            if (m_At >= m_Text.size()) return false;
            char e = m_Text[m_At++];
            switch (e) {
            case 'n': out += '\n'; break;
            case 't': out += '\t'; break;
            case 'r': out += '\r'; break;
            case 'b': out += '\b'; break;
            case 'f': out += '\f'; break;
            case 'u': {
                if (m_At + 4 > m_Text.size()) return false;
                long code = std::strtol(m_Text.substr(m_At, 4).c_str(), nullptr, 16);
                m_At += 4;
                out += char(code & 0xFF);  // the log escapes single bytes only
                break;
            }
            default: out += e;
            }
        }
        return false;
    }

    bool parseValue(JsonValue& value, int depth)
    {
        if (depth > 32) return false;
        skipBlanks();
        if (m_At >= m_Text.size()) return false;
        char c = m_Text[m_At];
        if (c == '"') {
            value.type = JsonValue::Type::String;
            return parseString(value.text);
        }
        if (c == '{') {
            ++m_At;
            value.type = JsonValue::Type::Object;
            if (take('}')) return true;
            do {
                std::string key;
                if (!parseString(key) || !take(':')) return false;
                if (!parseValue(value.members[key], depth + 1)) return false;
            } while (take(','));
            return take('}');
        }
        if (c == '[') {
            ++m_At;
            value.type = JsonValue::Type::Array;
            if (take(']')) return true;
            do {
                value.items.emplace_back();
                if (!parseValue(value.items.back(), depth + 1)) return false;
            } while (take(','));
            return take(']');
        }
        if (takeWord("true") || takeWord("false")) {
            value.type = JsonValue::Type::Bool;
            value.boolean = m_Text[m_At - 1] == 'e' && m_Text[m_At - 2] == 'u';
            return true;
        }
        if (takeWord("null")) return true;
        const char* start = m_Text.c_str() + m_At;
        char* end = nullptr;
        value.number = std::strtod(start, &end);
        if (end == start) return false;
        value.type = JsonValue::Type::Number;
        m_At += size_t(end - start);
        return true;
    }

    const std::string& m_Text;
    size_t m_At = 0;
};

}  // namespace

const JsonValue& JsonValue::operator[](const std::string& key) const
{
    auto it = members.find(key);
    return it == members.end() ? kNull : it->second;
}

const JsonValue& JsonValue::operator[](size_t index) const
{
    return index < items.size() ? items[index] : kNull;
}

bool parseJson(const std::string& text, JsonValue& value)
{
    value = JsonValue();
    return Parser(text).parseDocument(value);
}

}  // namespace e2e
