// The names of a certificate-manager answer's list (its "cert_list" field),
// however many it holds.
#pragma once

#include <string>
#include <vector>

// The StringElem texts of /response/MapElem/child[@name='cert_list']/ListElem
// in order, up to the first empty one. Nothing for malformed XML.
std::vector<std::string> readWholeNameList(const std::string& xml);
