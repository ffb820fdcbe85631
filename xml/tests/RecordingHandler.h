// A handler that writes every event as one line, for comparing event streams.
#pragma once

#include <string>

#include "xml/SimpleSAXHandler.h"

class RecordingHandler : public SimpleSAXHandler {
public:
    void startDocument() override { log += "startDocument\n"; }
    void startElement(const char* name, const attributes& attrs) override
    {
        log += "start " + std::string(name);
        char key[64];
        for (uint32_t i = 0; i < attrs.size(); ++i) {
            attrs.getName(i, key, sizeof key);
            log += " " + std::string(key) + "=[" + attrs.getValue(key) + "]";
        }
        log += "\n";
        if (stopAtStart == name) {
            m_Stop = true;
        }
    }
    void endElement(const char* name) override { log += "end " + std::string(name) + "\n"; }
    void characters(const char* text, int count) override
    {
        log += "text [" + std::string(text) + "] " + std::to_string(count) + "\n";
    }
    void endDocument() override { log += "endDocument\n"; }

    std::string log;
    std::string stopAtStart;
};
