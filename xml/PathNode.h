// One step of a compiled path, or one open element while a path is evaluated.
#pragma once

#include <string>

#include "xml/Attributes.h"

struct PathNode {
    std::string name;
    // Open element: its own text, appended run by run.
    std::string text;
    // Open element: a copy of its start tag's attributes.
    attributes attrs;
    // Step: the position wanted (1 to 9). Element: its position among
    // consecutive same-named elements, from 1.
    int index = 0;
    // Step: empty (no predicate), "<INDEX>", "<UNDEFINED>" or an attribute name.
    std::string predicateName;
    std::string predicateValue;

    void reset() { *this = PathNode(); }
};

// Predicate names that are not attribute names.
extern const char* const kIndexPredicate;      // "<INDEX>"
extern const char* const kUndefinedPredicate;  // "<UNDEFINED>"
