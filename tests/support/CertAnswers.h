// Answers of the printer's certificate manager, as the scripted printer
// plays them: one packet holding the 7-byte envelope and the XML.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/HexText.h"

inline std::string xmlChild(const std::string& name, const std::string& element, const std::string& value)
{
    return "<child name=\"" + name + "\"><" + element + ">" + value + "</" + element + "></child>";
}

inline std::string stringChild(const std::string& name, const std::string& value)
{
    return xmlChild(name, "StringElem", value);
}

inline std::string answerXml(int status, const std::string& more = "")
{
    return "<response><MapElem>" + xmlChild("status_code", "IntegerElem", std::to_string(status)) + more +
           "</MapElem></response>";
}

inline std::string listAnswerXml(const std::vector<std::string>& names)
{
    std::string items;
    for (const std::string& name : names) items += "<StringElem>" + name + "</StringElem>";
    return answerXml(1, xmlChild("cert_list", "ListElem", items));
}

// A5, length, flags 50, the envelope (hex), the XML.
inline std::string answerPacket(const std::string& xml, const std::string& envelope = "E0C003000100E0")
{
    const std::string content = envelope + hexOf(xml);
    const size_t length = 1 + bytesFromHex(content).size();
    char head[16];
    std::snprintf(head, sizeof head, "A5%04zX50", length);
    return head + content;
}
