// Feeds arbitrary bytes to the SAX parser with a handler that records every
// event and checks the event stream's shape: one startDocument first, one
// endDocument last, end tags that close the innermost open element.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "xml/SimpleSAXParser.h"

namespace {

class CheckingHandler : public SimpleSAXHandler {
public:
    void startDocument() override
    {
        check(!m_Started, "second startDocument");
        m_Started = true;
    }
    void startElement(const char* name, const attributes& attrs) override
    {
        check(m_Started && !m_Ended, "startElement outside the document");
        check(name[0] != '\0', "empty element name");
        char buffer[8];
        for (uint32_t i = 0; i < attrs.size(); ++i) {
            attrs.getName(i, buffer, sizeof buffer);
            m_Bytes += attrs.getValue(i, buffer, sizeof buffer);
        }
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
        m_Bytes += std::strlen(text);
    }
    void endDocument() override
    {
        check(m_Started && !m_Ended, "endDocument without startDocument or twice");
        m_Ended = true;
    }

    bool finished() const { return m_Started && m_Ended; }

private:
    static void check(bool condition, const char* what)
    {
        if (!condition) {
            std::fprintf(stderr, "event stream broken: %s\n", what);
            std::abort();
        }
    }

    bool m_Started = false;
    bool m_Ended = false;
    std::vector<std::string> m_Open;
    size_t m_Bytes = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), size);
    // The parser prints its error messages; keep the fuzzer's output readable.
    static FILE* devNull = std::freopen("/dev/null", "w", stdout);
    (void)devNull;
    CheckingHandler handler;
    SimpleSAXParser parser(&handler);
    const int result = parser.parse(text);
    if ((result != 0 && result != -1) || !handler.finished()) {
        std::abort();
    }
    // The same text through the null handler must give the same result.
    SimpleSAXParser quiet(nullptr);
    if (quiet.parse(text) != result) {
        std::abort();
    }
    return 0;
}
