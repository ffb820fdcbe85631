// The documents both parsers read in the benchmark. All are well-formed, so
// expat accepts them too.
#pragma once

#include <cstddef>
#include <string>

// A certificate manager's answer to readCertDefaults (about 700 bytes).
std::string typicalAnswer();
// Many small elements: a long cert_list, at least `bytes` long.
std::string smallElementsDocument(size_t bytes);
// Elements whose attributes and texts are dense with the five entities.
std::string entityDenseDocument(size_t bytes);
