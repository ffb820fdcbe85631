// Turns a path such as "/response/MapElem/child[@name='status_code']/IntegerElem"
// into its steps.
#pragma once

#include <string>
#include <vector>

#include "xml/PathNode.h"

// Text before the first '/' is ignored and empty steps are skipped; a '/'
// inside a predicate value splits the step.
std::vector<PathNode> compilePath(const std::string& path);

// One step text (already trimmed): its name and at most one predicate.
PathNode compileStep(const std::string& step);
