#include "xml/SimpleSAXParser.h"

#include <climits>
#include <cstdio>
#include <cstring>

#include "common/Console.h"
#include "xml/XmlEntities.h"

namespace {

bool isWhitespace(unsigned char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool isNameStart(unsigned char c) { return c == ':' || c == '_' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool isNameChar(unsigned char c) { return isNameStart(c) || c == '-' || c == '.' || (c >= '0' && c <= '9'); }

bool isLowerOf(char c, char lower) { return c == lower || c == lower - ('a' - 'A'); }

// True when the text holds `what` at `pos` (never reads past the end).
bool lookingAt(const char* text, size_t length, size_t pos, const char* what)
{
    const size_t n = std::strlen(what);
    return pos <= length && length - pos >= n && std::memcmp(text + pos, what, n) == 0;
}

// Position of `what` at or after `from`, or `length` when it does not occur.
size_t findFrom(const char* text, size_t length, size_t from, const char* what)
{
    if (from >= length) {
        return length;
    }
    const char* hit = std::strstr(text + from, what);
    return hit == nullptr ? length : static_cast<size_t>(hit - text);
}

// Moves `pos` past whitespace.
void skipWhitespace(const char* text, size_t length, size_t& pos)
{
    while (pos < length && isWhitespace(static_cast<unsigned char>(text[pos]))) {
        ++pos;
    }
}

// Moves `pos` past the characters a name may hold after its first.
void skipNameChars(const char* text, size_t length, size_t& pos)
{
    while (pos < length && isNameChar(static_cast<unsigned char>(text[pos]))) {
        ++pos;
    }
}

}  // namespace

SimpleSAXParser::SimpleSAXParser(SimpleSAXHandler* handler) : m_Handler(handler) {}

int SimpleSAXParser::parse(const std::string& text) { return parse(text.c_str()); }

int SimpleSAXParser::parse(const char* text)
{
    Run run;
    run.text = text == nullptr ? "" : text;
    run.length = std::strlen(run.text);

    int status = 0;
    if (m_Handler != nullptr) {
        m_Handler->startDocument();
        checkStop(run);
    }
    // Prolog: everything before the first start tag. Stray bytes (a byte-order
    // mark, text) are skipped silently; failures here print nothing.
    while (run.pos < run.length && status != -1) {
        if (lookingAt(run.text, run.length, run.pos, "<?")) {
            status = skipProcessingInstruction(run);
        } else if (lookingAt(run.text, run.length, run.pos, "<!")) {
            status = skipComment(run);
        } else if (run.text[run.pos] == '<' && run.pos + 1 < run.length &&
                   isNameStart(static_cast<unsigned char>(run.text[run.pos + 1]))) {
            status = runElementLoop(run);
            break;
        } else {
            ++run.pos;
        }
        checkStop(run);
    }
    if (m_Handler != nullptr) {
        m_Handler->endDocument();
    }
    return status == -1 ? -1 : 0;
}

void SimpleSAXParser::checkStop(Run& run)
{
    if (m_Handler != nullptr && m_Handler->m_Stop) {
        run.pos = run.length;
    }
}

int SimpleSAXParser::runElementLoop(Run& run)
{
    int status = 0;
    while (run.pos < run.length && status == 0) {
        const char c = run.text[run.pos];
        const bool hasNext = run.pos + 1 < run.length;
        const char next = hasNext ? run.text[run.pos + 1] : '\0';
        if (c != '<') {
            if (!run.open.empty()) {
                parseText(run);
            } else if (isWhitespace(static_cast<unsigned char>(c))) {
                ++run.pos;
            } else {
                Seam<Console>::get().user("dunno what to do?!\n");
                status = -1;
            }
        } else if (hasNext && isNameStart(static_cast<unsigned char>(next))) {
            std::string name;
            attributes attrs;
            bool isEmpty = false;
            status = parseStartTag(run, name, attrs, isEmpty);
            if (status == 0) {
                run.open.push_back(name);
                if (m_Handler != nullptr) {
                    m_Handler->startElement(name.c_str(), attrs);
                }
                if (isEmpty) {
                    if (m_Handler != nullptr) {
                        m_Handler->endElement(name.c_str());
                    }
                    run.open.pop_back();
                }
                checkStop(run);
            }
        } else if (next == '/') {
            if (run.open.empty()) {
                status = -1;
            } else {
                status = parseEndTag(run, run.open.back());
                if (status == 0) {
                    if (m_Handler != nullptr) {
                        m_Handler->endElement(run.open.back().c_str());
                    }
                    checkStop(run);
                    run.open.pop_back();
                }
            }
        } else if (next == '?') {
            status = skipProcessingInstruction(run);
        } else if (next == '!') {
            status = skipComment(run);
        } else {
            // A lone '<': skip it; inside an element the rest reads as text.
            ++run.pos;
        }
    }
    if (status == -1) {
        reportError(run);
        return -1;
    }
    return 0;
}

// Position on '<'. A tag cut off by the end of the text (no '>', or inside a
// quoted value) still counts as a complete start tag: it is reported with
// startElement and the parse then ends with 0, like any text that ends with
// elements still open. An answer truncated in transit thus yields the
// elements read so far, and never a read past the end.
int SimpleSAXParser::parseStartTag(Run& run, std::string& name, attributes& attrs, bool& isEmpty)
{
    ++run.pos;
    if (parseName(run, name) != 0) {
        return -1;
    }
    for (;;) {
        skipWhitespace(run.text, run.length, run.pos);
        if (run.pos >= run.length || run.text[run.pos] == '>') {
            break;
        }
        if (lookingAt(run.text, run.length, run.pos, "/>")) {
            isEmpty = true;
            ++run.pos;
            break;
        }
        if (parseAttribute(run, attrs) != 0) {
            return -1;
        }
    }
    if (run.pos < run.length) {
        ++run.pos;  // the '>'
    }
    return 0;
}

// Position on "</".
int SimpleSAXParser::parseEndTag(Run& run, const std::string& expected)
{
    run.pos += 2;
    std::string name;
    if (parseName(run, name) != 0 || name != expected) {
        return -1;
    }
    skipWhitespace(run.text, run.length, run.pos);
    if (run.pos >= run.length || run.text[run.pos] != '>') {
        return -1;
    }
    ++run.pos;
    return 0;
}

// An element name; names starting with "xml" in any case are reserved. On
// failure the position stays where the name should begin.
int SimpleSAXParser::parseName(Run& run, std::string& name)
{
    if (run.pos >= run.length || !isNameStart(static_cast<unsigned char>(run.text[run.pos]))) {
        return -1;
    }
    if (run.length - run.pos >= 3 && isLowerOf(run.text[run.pos], 'x') && isLowerOf(run.text[run.pos + 1], 'm') &&
        isLowerOf(run.text[run.pos + 2], 'l')) {
        return -1;
    }
    const size_t begin = run.pos;
    skipNameChars(run.text, run.length, run.pos);
    name.assign(run.text + begin, run.pos - begin);
    return 0;
}

// name, optional whitespace, '=', optional whitespace, a double-quoted value.
// On failure the position is on the offending byte (or at the end).
int SimpleSAXParser::parseAttribute(Run& run, attributes& attrs)
{
    if (!isNameStart(static_cast<unsigned char>(run.text[run.pos]))) {
        return -1;
    }
    const size_t nameBegin = run.pos;
    skipNameChars(run.text, run.length, run.pos);
    const std::string name(run.text + nameBegin, run.pos - nameBegin);
    skipWhitespace(run.text, run.length, run.pos);
    if (run.pos >= run.length || run.text[run.pos] != '=') {
        return -1;
    }
    ++run.pos;
    skipWhitespace(run.text, run.length, run.pos);
    if (run.pos >= run.length || run.text[run.pos] != '"') {
        return -1;
    }
    ++run.pos;
    const size_t valueBegin = run.pos;
    const void* quote = std::memchr(run.text + valueBegin, '"', run.length - valueBegin);
    const size_t valueEnd = quote == nullptr ? run.length : static_cast<const char*>(quote) - run.text;
    attrs.set(name.c_str(), decodeEntities(run.text + valueBegin, valueEnd - valueBegin).c_str());
    run.pos = valueEnd < run.length ? valueEnd + 1 : run.length;
    return 0;
}

// A text run: leading whitespace dropped, everything up to the next '<'.
void SimpleSAXParser::parseText(Run& run)
{
    skipWhitespace(run.text, run.length, run.pos);
    const size_t begin = run.pos;
    const void* lt = std::memchr(run.text + begin, '<', run.length - begin);
    run.pos = lt == nullptr ? run.length : static_cast<const char*>(lt) - run.text;
    const size_t count = run.pos - begin;
    if (count == 0) {
        return;
    }
    if (m_Handler != nullptr) {
        const std::string decoded = decodeEntities(run.text + begin, count);
        m_Handler->characters(decoded.c_str(), count > INT_MAX ? INT_MAX : static_cast<int>(count));
    }
    checkStop(run);
}

// Position on "<?": the search for "?>" starts at the '?', so "<?>" is complete.
int SimpleSAXParser::skipProcessingInstruction(Run& run)
{
    const size_t end = findFrom(run.text, run.length, run.pos + 1, "?>");
    if (end == run.length) {
        run.pos = run.length;
        return -1;
    }
    run.pos = end + 2;
    return 0;
}

// Position on "<!": comments, but also DOCTYPE and CDATA, end at the next "-->".
int SimpleSAXParser::skipComment(Run& run)
{
    const size_t end = findFrom(run.text, run.length, run.pos + 2, "-->");
    if (end == run.length) {
        run.pos = run.length;
        return -1;
    }
    run.pos = end + 3;
    return 0;
}

void SimpleSAXParser::reportError(const Run& run)
{
    if (run.pos >= run.length) {
        Seam<Console>::get().user("<<end of string>>\n");
    } else {
        userF("Parsing error at character %d, '%c'\n", run.pos > INT_MAX ? INT_MAX : static_cast<int>(run.pos),
              run.text[run.pos]);
    }
}
