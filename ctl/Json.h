// A small JSON writer: one document built in memory, on one line, with ", "
// and ": " between items as corvelctl prints them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvelctl {

// Appends `text` as a JSON string (with its quotes) to `out`. Quotes,
// backslashes and control characters are escaped; every byte that is not part
// of well-formed UTF-8 becomes U+FFFD, so that what a printer or a file name
// holds can never break the document.
void appendJsonString(std::string& out, std::string_view text);

// Calls must form a valid document: a key before each value inside an object,
// no key inside an array. The writer places the separators.
class JsonWriter {
public:
    void beginObject();
    void endObject();
    void beginArray();
    void endArray();
    void key(std::string_view name);
    void string(std::string_view value);
    void integer(long long value);
    void boolean(bool value);
    void null();

    const std::string& text() const { return m_Text; }

private:
    void beforeValue();
    void open(char bracket);
    void close(char bracket);

    std::string m_Text;
    // One entry per open object or array: whether it has an item yet.
    std::vector<bool> m_HasItem;
    bool m_AfterKey = false;
};

}  // namespace corvelctl
