// What a command tells on success: an ordered list of fields, printed either
// for people as aligned "key: value" lines or for scripts as one JSON object.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace corvelctl {

class Report {
public:
    enum class FieldKind { Text, Null, Integer, Bool, Object, List };
    struct Field;

    // Each adds a field at the end and returns the report, so calls chain.
    // The names say the JSON type; text values are any bytes (the JSON form
    // replaces what is not UTF-8).
    Report& addText(std::string key, std::string value);
    Report& addOptionalText(std::string key, const std::optional<std::string>& value);  // null when absent
    Report& addNull(std::string key);
    Report& addInteger(std::string key, long long value);
    Report& addBool(std::string key, bool value);
    Report& addObject(std::string key, Report object);
    Report& addList(std::string key, std::vector<Report> items);

    // Inserts a text field (null when absent) before the field at
    // `position`, or at the end when there are fewer fields.
    Report& insertOptionalText(std::size_t position, std::string key, const std::optional<std::string>& value);

    // Replaces what the human form shows for the last field added (for
    // example "2 (authenticated)" for an object, or "joined" for a bool).
    Report& humanText(std::string text);

    const std::vector<Field>& fields() const { return m_Fields; }

    // Human form: one "key: value" line per field, the values aligned one
    // column after the longest key's colon. Text is printed as it is; a null
    // shows as "-", a bool as "yes"/"no". An object shows "key:" then its own
    // block indented by two spaces; a list shows "key:" then each item's
    // block indented, items separated by an empty line. Control characters
    // in text (a hostile SSID could hold escape sequences) show as \xNN.
    std::string renderHuman() const;
    // The JSON object on one line, without a line end.
    std::string renderJson() const;

private:
    // A new last field of `kind`, for the adders to fill in.
    Field& append(std::string key, FieldKind kind);

    std::vector<Field> m_Fields;
};

// `text` with each control character shown as \xNN, as the human form shows
// text: a terminal must not act on bytes that came from a printer or a file.
std::string withoutControlCharacters(const std::string& text);

struct Report::Field {
    using Kind = FieldKind;
    std::string key;
    Kind kind = Kind::Null;
    std::string text;
    long long integer = 0;
    bool flag = false;
    std::vector<Report> children;  // one for an Object, the items of a List
    std::optional<std::string> human;
};

}  // namespace corvelctl
