// Certificate-manager method calls ("callMethod" on "applications.certMgr"):
// what the utility sends, decoded from its XML.
#pragma once

#include <string>
#include <vector>

namespace corvelsim {

// The ten methods the printer's certificate manager answers.
extern const char* const kCertMgrMethods[10];
bool isCertMgrMethod(const std::string& name);

// One parameter of a call: <child name="NAME"><TYPE>VALUE</TYPE></child>,
// with the value's entities decoded.
struct CertParam {
    std::string name;
    std::string type;  // "StringElem", "IntegerElem", "BinaryElem"
    std::string value;
};

struct CertMgrCall {
    bool wellFormed = false;  // the XML could be read
    std::string object;       // <arg name="objName">
    std::string method;       // <arg name="method">
    std::vector<CertParam> params;

    // The value of a parameter; nullptr when the call has none of that name.
    const std::string* param(const std::string& name) const;
};

// Reads a call's XML. At most kMaxCertParams parameters are kept.
CertMgrCall parseCertMgrCall(const std::string& xml);
constexpr size_t kMaxCertParams = 16;

}  // namespace corvelsim
