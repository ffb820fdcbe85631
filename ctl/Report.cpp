#include "ctl/Report.h"

#include "ctl/Json.h"

#include <algorithm>
#include <cstdio>

namespace corvelctl {

namespace {

void writeJson(JsonWriter& writer, const Report& report);

void writeJsonValue(JsonWriter& writer, const Report::Field& field)
{
    using Kind = Report::Field::Kind;
    switch (field.kind) {
    case Kind::Text: writer.string(field.text); break;
    case Kind::Null: writer.null(); break;
    case Kind::Integer: writer.integer(field.integer); break;
    case Kind::Bool: writer.boolean(field.flag); break;
    case Kind::Object: writeJson(writer, field.children.front()); break;
    case Kind::List:
        writer.beginArray();
        for (const Report& item : field.children) writeJson(writer, item);
        writer.endArray();
        break;
    }
}

void writeJson(JsonWriter& writer, const Report& report)
{
    writer.beginObject();
    for (const Report::Field& field : report.fields()) {
        writer.key(field.key);
        writeJsonValue(writer, field);
    }
    writer.endObject();
}

std::string scalarHumanText(const Report::Field& field)
{
    using Kind = Report::Field::Kind;
    switch (field.kind) {
    case Kind::Text: return withoutControlCharacters(field.text);
    case Kind::Integer: return std::to_string(field.integer);
    case Kind::Bool: return field.flag ? "yes" : "no";
    default: return "-";
    }
}

bool showsNestedBlock(const Report::Field& field)
{
    using Kind = Report::Field::Kind;
    return !field.human && (field.kind == Kind::Object || field.kind == Kind::List);
}

void appendHuman(std::string& out, const Report& report, const std::string& indent)
{
    std::size_t longestKey = 0;
    for (const auto& field : report.fields()) longestKey = std::max(longestKey, field.key.size());
    for (const auto& field : report.fields()) {
        out += indent + field.key + ':';
        if (showsNestedBlock(field)) {
            out += '\n';
            bool first = true;
            for (const Report& child : field.children) {
                if (!first) out += '\n';
                first = false;
                appendHuman(out, child, indent + "  ");
            }
            continue;
        }
        out.append(longestKey - field.key.size() + 1, ' ');
        out += field.human ? withoutControlCharacters(*field.human) : scalarHumanText(field);
        out += '\n';
    }
}

}  // namespace

std::string withoutControlCharacters(const std::string& text)
{
    std::string out;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7F) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02x", byte);
            out += escaped;
        } else {
            out += c;
        }
    }
    return out;
}

Report::Field& Report::append(std::string key, FieldKind kind)
{
    Field& field = m_Fields.emplace_back();
    field.key = std::move(key);
    field.kind = kind;
    return field;
}

Report& Report::addText(std::string key, std::string value)
{
    append(std::move(key), Field::Kind::Text).text = std::move(value);
    return *this;
}

Report& Report::addOptionalText(std::string key, const std::optional<std::string>& value)
{
    return value ? addText(std::move(key), *value) : addNull(std::move(key));
}

Report& Report::addNull(std::string key)
{
    append(std::move(key), Field::Kind::Null);
    return *this;
}

Report& Report::addInteger(std::string key, long long value)
{
    append(std::move(key), Field::Kind::Integer).integer = value;
    return *this;
}

Report& Report::addBool(std::string key, bool value)
{
    append(std::move(key), Field::Kind::Bool).flag = value;
    return *this;
}

Report& Report::addObject(std::string key, Report object)
{
    append(std::move(key), Field::Kind::Object).children.push_back(std::move(object));
    return *this;
}

Report& Report::addList(std::string key, std::vector<Report> items)
{
    append(std::move(key), Field::Kind::List).children = std::move(items);
    return *this;
}

Report& Report::insertOptionalText(std::size_t position, std::string key, const std::optional<std::string>& value)
{
    Field field;
    field.key = std::move(key);
    field.kind = value ? Field::Kind::Text : Field::Kind::Null;
    field.text = value.value_or("");
    m_Fields.insert(m_Fields.begin() + static_cast<std::ptrdiff_t>(std::min(position, m_Fields.size())),
                    std::move(field));
    return *this;
}

Report& Report::humanText(std::string text)
{
    if (!m_Fields.empty()) m_Fields.back().human = std::move(text);
    return *this;
}

std::string Report::renderHuman() const
{
    std::string out;
    appendHuman(out, *this, "");
    return out;
}

std::string Report::renderJson() const
{
    JsonWriter writer;
    writeJson(writer, *this);
    return writer.text();
}

}  // namespace corvelctl
