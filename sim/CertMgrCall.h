// Certificate-manager method calls ("callMethod" on "applications.certMgr"),
// the XML side of the printer. Answers slot in here as they are added.
#pragma once

#include <string>

namespace corvelsim {

// The value of <arg name="method"> in a call, or "" when the XML has none.
std::string certMgrMethodName(const std::string& xml);

}  // namespace corvelsim
