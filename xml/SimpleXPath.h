// Picks one text value out of an XML document by an absolute path with at most
// one attribute-equality or position (1 to 9) predicate per step. Every
// evaluation parses the whole document again and stops at the first match.
#pragma once

#include <string>
#include <vector>

#include "xml/PathNode.h"
#include "xml/SimpleSAXHandler.h"

class simpleXPath : public SimpleSAXHandler {
public:
    explicit simpleXPath(const std::string& document);
    ~simpleXPath() override = default;

    // The own text of the first element matching `path`, or "" (no match,
    // an empty element, a path without steps, a parse error before a match).
    std::string evaluate(const std::string& path);
    std::string evaluate(const char* path);

    void startDocument() override;
    void startElement(const char* name, const attributes& attrs) override;
    void endElement(const char* name) override;
    void characters(const char* text, int count) override;
    void endDocument() override {}

private:
    // True when the steps match the open elements at exactly their depth.
    bool stepsMatchOpenElements() const;

    std::string m_Document;
    std::vector<PathNode> m_Steps;
    std::vector<PathNode> m_Open;
    std::string m_Result;
    PathNode m_Scratch;
    PathNode m_LastClosed;
};
