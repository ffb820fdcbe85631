// Feeds arbitrary bytes to the SAX parser with a handler that records every
// event and checks the event stream's shape: one startDocument first, one
// endDocument last, end tags that close the innermost open element. Every
// attribute list is read through the buffer forms at several sizes and must
// agree with its string form: truncated, zero-filled, never past the size.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "xml/SimpleSAXParser.h"

namespace {

void check(bool condition, const char* what)
{
    if (!condition) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

// What a buffer form must leave in a buffer of `size` bytes (plus one guard byte 'Z').
void checkBuffer(const std::vector<char>& buffer, uint32_t size, uint32_t copied, const std::string& text)
{
    const uint32_t expected = size == 0 ? 0 : std::min<uint32_t>(uint32_t(text.size()), size - 1);
    check(copied == expected, "buffer form: wrong count");
    check(buffer[size] == 'Z', "buffer form: wrote past the size");
    if (size == 0) return;
    check(text.compare(0, copied, buffer.data(), copied) == 0, "buffer form: wrong text");
    for (uint32_t i = copied; i < size; ++i) check(buffer[i] == '\0', "buffer form: not zero-filled");
}

// `longest`: more than any name in the input.
void checkBufferForms(const attributes& attrs, uint32_t longest)
{
    std::string previous;
    for (uint32_t index = 0; index <= attrs.size(); ++index) {  // one past the last gives ""
        std::vector<char> whole(longest, '\0');
        attrs.getName(index, whole.data(), longest);
        const std::string name = whole.data();
        const bool inRange = index < attrs.size();
        check(!inRange || ((index == 0 || previous < name) && attrs.has(name.c_str()) == 1), "names not in order");
        previous = name;
        const std::string value = inRange ? attrs.getValue(name) : "";
        for (const uint32_t size : {0u, 1u, 4u, 9u, 64u}) {
            std::vector<char> buffer(size + 1, 'Z');
            checkBuffer(buffer, size, attrs.getName(index, buffer.data(), size), name);
            std::fill(buffer.begin(), buffer.end(), 'Z');
            checkBuffer(buffer, size, attrs.getValue(index, buffer.data(), size), value);
            if (!inRange) continue;
            std::fill(buffer.begin(), buffer.end(), 'Z');
            checkBuffer(buffer, size, attrs.getValue(name.c_str(), buffer.data(), size), value);
        }
    }
}

class CheckingHandler : public SimpleSAXHandler {
public:
    explicit CheckingHandler(size_t inputSize) : m_Longest(uint32_t(inputSize + 1)) {}

    void startDocument() override
    {
        check(!m_Started, "second startDocument");
        m_Started = true;
    }
    void startElement(const char* name, const attributes& attrs) override
    {
        check(m_Started && !m_Ended, "startElement outside the document");
        check(name[0] != '\0', "empty element name");
        checkBufferForms(attrs, m_Longest);
        m_Open.push_back(name);
    }
    void endElement(const char* name) override
    {
        check(!m_Open.empty() && m_Open.back() == name, "endElement does not close the innermost element");
        m_Open.pop_back();
    }
    void characters(const char* text, int count) override
    {
        check(!m_Open.empty(), "text outside every element");
        check(count > 0 && std::strlen(text) <= static_cast<size_t>(count), "text longer than its input run");
    }
    void endDocument() override
    {
        check(m_Started && !m_Ended, "endDocument without startDocument or twice");
        m_Ended = true;
    }

    bool finished() const { return m_Started && m_Ended; }

private:
    const uint32_t m_Longest;
    bool m_Started = false;
    bool m_Ended = false;
    std::vector<std::string> m_Open;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    // The parser prints its error messages; keep the fuzzer's output readable.
    static FILE* devNull = std::freopen("/dev/null", "w", stdout);
    (void)devNull;
    CheckingHandler handler(size);
    SimpleSAXParser parser(&handler);
    const int result = parser.parse(text);
    if ((result != 0 && result != -1) || !handler.finished()) {
        std::abort();
    }
    // The same text through the null handler must give the same result.
    SimpleSAXParser quiet(nullptr);
    check(quiet.parse(text) == result, "the null handler changes the result");
    return 0;
}
