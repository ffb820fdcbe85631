// Decoding of the five predefined XML entities in text runs and attribute values.
#pragma once

#include <string>

// Replaces "&amp;", "&quot;", "&apos;", "&lt;" and "&gt;" by their characters
// and removes any other reference from '&' to the next ';'. The byte right
// after a removed reference is taken literally, and a replacement is never
// decoded again. Runs in one pass, linear in the length of `raw`.
std::string decodeEntities(const char* raw, size_t length);
