#include "xml/XmlEntities.h"

#include <cstring>

namespace {

// The character an entity name stands for, or 0 for a name we do not know.
char entityValue(const char* name, size_t length)
{
    struct Entity {
        const char* name;
        char value;
    };
    static const Entity known[] = {{"amp", '&'}, {"quot", '"'}, {"apos", '\''}, {"lt", '<'}, {"gt", '>'}};
    for (const Entity& entity : known) {
        if (std::strlen(entity.name) == length && std::memcmp(entity.name, name, length) == 0) {
            return entity.value;
        }
    }
    return 0;
}

}  // namespace

std::string decodeEntities(const char* raw, size_t length)
{
    std::string decoded;
    decoded.reserve(length);
    size_t pos = 0;
    // Where the last search for ';' ended: a run with many '&' and no ';'
    // must not scan the rest of the text once per '&'.
    size_t semicolon = 0;
    bool semicolonSearched = false;
    while (pos < length) {
        const void* ampFound = std::memchr(raw + pos, '&', length - pos);
        if (ampFound == nullptr) {
            break;
        }
        const size_t amp = static_cast<const char*>(ampFound) - raw;
        decoded.append(raw + pos, amp - pos);
        if (!semicolonSearched || (semicolon != length && semicolon <= amp)) {
            const void* semiFound = std::memchr(raw + amp + 1, ';', length - amp - 1);
            semicolon = semiFound == nullptr ? length : static_cast<const char*>(semiFound) - raw;
            semicolonSearched = true;
        }
        if (semicolon == length) {
            // No ';' follows: every remaining '&' stays as it is.
            pos = amp;
            break;
        }
        const char value = entityValue(raw + amp + 1, semicolon - amp - 1);
        pos = semicolon + 1;
        if (value != 0) {
            decoded.push_back(value);
        } else if (pos < length) {
            // The printer's reader resumes one byte after the removed
            // reference, so that byte is kept even if it is an '&'.
            decoded.push_back(raw[pos]);
            ++pos;
        }
    }
    decoded.append(raw + pos, length - pos);
    return decoded;
}
