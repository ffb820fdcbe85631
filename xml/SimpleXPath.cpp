#include "xml/SimpleXPath.h"

#include <climits>

#include "xml/PathCompiler.h"
#include "xml/SimpleSAXParser.h"

simpleXPath::simpleXPath(const std::string& document) : m_Document(document) {}

std::string simpleXPath::evaluate(const char* path) { return evaluate(std::string(path == nullptr ? "" : path)); }

std::string simpleXPath::evaluate(const std::string& path)
{
    m_Steps = compilePath(path);
    m_Stop = false;
    SimpleSAXParser parser(this);
    // A parse error leaves whatever result stood before it; the parser has
    // printed its message.
    parser.parse(m_Document);
    m_Steps.clear();
    return m_Result;
}

void simpleXPath::startDocument()
{
    m_Result.clear();
    m_Scratch.reset();
    m_LastClosed.reset();
    m_Open.clear();
}

void simpleXPath::startElement(const char* name, const attributes& attrs)
{
    m_Scratch.reset();
    m_Scratch.name = name;
    m_Scratch.attrs = attrs;
    // An element continues the count of the element that closed just before
    // it opened (at any depth) when both have the same name.
    const bool continuesRun = m_LastClosed.name == m_Scratch.name && m_LastClosed.index < INT_MAX;
    m_Scratch.index = continuesRun ? m_LastClosed.index + 1 : 1;
    m_Open.push_back(m_Scratch);
}

void simpleXPath::characters(const char* text, int count)
{
    (void)count;
    if (!m_Open.empty()) {
        m_Open.back().text.append(text);
    }
}

void simpleXPath::endElement(const char* name)
{
    (void)name;  // the parser only closes the innermost open element
    if (m_Open.empty()) {
        return;
    }
    if (stepsMatchOpenElements()) {
        m_Result = m_Open.back().text;
        m_Stop = true;
    }
    m_LastClosed = std::move(m_Open.back());
    m_Open.pop_back();
}

bool simpleXPath::stepsMatchOpenElements() const
{
    if (m_Steps.size() != m_Open.size()) {
        return false;
    }
    for (size_t depth = 0; depth < m_Steps.size(); ++depth) {
        const PathNode& step = m_Steps[depth];
        const PathNode& element = m_Open[depth];
        if (step.name != element.name) {
            return false;
        }
        if (step.predicateName.empty()) {
            continue;
        }
        if (step.predicateName == kUndefinedPredicate) {
            return false;
        }
        if (step.predicateName == kIndexPredicate) {
            if (step.index != element.index) {
                return false;
            }
        } else if (element.attrs.getValue(step.predicateName) != step.predicateValue) {
            return false;
        }
    }
    return true;
}
