// One pass of the SAX parser that follows the element path to the list.
#include "xml/NameList.h"

#include "xml/SimpleSAXParser.h"

namespace {

class NameListHandler : public SimpleSAXHandler {
public:
    void startElement(const char* name, const attributes& attrs) override
    {
        const size_t depth = m_Path.size();
        m_Path.emplace_back(name);
        // The list's field is the child named cert_list (depth 2: response, MapElem).
        if (depth == 2 && m_Path[2] == "child" && attrs.getValue("name") == "cert_list") m_InList = true;
        if (onItem()) m_Text.clear();
    }
    void characters(const char* text, int) override
    {
        if (onItem()) m_Text += text;
    }
    void endElement(const char*) override
    {
        if (onItem()) {
            if (m_Text.empty()) {
                m_Stop = true;  // the list ends at its first empty name
            } else {
                names.push_back(m_Text);
            }
        }
        if (m_Path.size() == 3) m_InList = false;
        if (!m_Path.empty()) m_Path.pop_back();
    }

    std::vector<std::string> names;

private:
    bool onItem() const
    {
        return m_InList && m_Path.size() == 5 && m_Path[0] == "response" && m_Path[1] == "MapElem" &&
               m_Path[3] == "ListElem" && m_Path[4] == "StringElem";
    }

    std::vector<std::string> m_Path;
    std::string m_Text;
    bool m_InList = false;
};

}  // namespace

std::vector<std::string> readWholeNameList(const std::string& xml)
{
    NameListHandler handler;
    SimpleSAXParser parser(&handler);
    if (parser.parse(xml) != 0) {
        return {};
    }
    return handler.names;
}
