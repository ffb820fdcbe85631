// Receives the events of SimpleSAXParser. Every default does nothing; a
// derived handler sets m_Stop to end the parse early.
#pragma once

#include "xml/Attributes.h"

class SimpleSAXHandler {
public:
    virtual ~SimpleSAXHandler() = default;

    virtual void startDocument() {}
    // `name` and `attrs` are valid only during the call.
    virtual void startElement(const char* name, const attributes& attrs)
    {
        (void)name;
        (void)attrs;
    }
    virtual void endElement(const char* name) { (void)name; }
    // `text` is entity-decoded; `count` is the number of input bytes of the
    // run, which exceeds strlen(text) when entities were replaced.
    virtual void characters(const char* text, int count)
    {
        (void)text;
        (void)count;
    }
    virtual void endDocument() {}

    // Read by the parser after each event, never written by it.
    bool m_Stop = false;
};
