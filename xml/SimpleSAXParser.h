// A small, forgiving, single-pass XML tokenizer for the certificate manager's
// answers. It reports start tags (with double-quoted attributes), end tags,
// empty-element tags and text to a SimpleSAXHandler, skips processing
// instructions and every "<!" construct, and keeps no document tree.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "xml/SimpleSAXHandler.h"

class SimpleSAXParser {
public:
    // `handler` is not owned and may be null (events then go nowhere).
    explicit SimpleSAXParser(SimpleSAXHandler* handler);
    virtual ~SimpleSAXParser() = default;

    // Parses the text up to its first NUL byte. Returns 0 (also after an early
    // stop by the handler or with elements still open) or -1 (malformed).
    int parse(const char* text);
    int parse(const std::string& text);

private:
    // Per-run state, reset by every parse().
    struct Run {
        const char* text = nullptr;
        size_t length = 0;
        size_t pos = 0;
        std::vector<std::string> open;
    };

    int runElementLoop(Run& run);
    int parseStartTag(Run& run, std::string& name, attributes& attrs, bool& isEmpty);
    int parseEndTag(Run& run, const std::string& expected);
    int parseName(Run& run, std::string& name);
    int parseAttribute(Run& run, attributes& attrs);
    void parseText(Run& run);
    int skipProcessingInstruction(Run& run);
    int skipComment(Run& run);
    void reportError(const Run& run);
    // After an event: a set stop flag moves the position to the end of the text.
    void checkStop(Run& run);

    SimpleSAXHandler* m_Handler;
};
