#include "sim/wire/CertMgrCall.h"

#include <pugixml.hpp>

namespace corvelsim {

const char* const kCertMgrMethods[10] = {
    "deleteIndividualCA", "deleteIndividualCert", "readCertDefaults", "uploadSignedCertFile", "queryCAInfo",
    "queryCertList",      "queryCAList",          "uploadNewCAFile",  "exportPubKey",         "generateNewCert"};

bool isCertMgrMethod(const std::string& name)
{
    for (const char* method : kCertMgrMethods) {
        if (name == method) return true;
    }
    return false;
}

const std::string* CertMgrCall::param(const std::string& name) const
{
    for (const CertParam& p : params) {
        if (p.name == name) return &p.value;
    }
    return nullptr;
}

CertMgrCall parseCertMgrCall(const std::string& xml)
{
    CertMgrCall call;
    pugi::xml_document document;
    if (!document.load_buffer(xml.data(), xml.size())) return call;
    call.wellFormed = true;
    pugi::xml_node method = document.child("method");
    for (pugi::xml_node arg : method.children("arg")) {
        std::string name = arg.attribute("name").value();
        if (name == "objName") call.object = arg.child_value();
        if (name == "method") call.method = arg.child_value();
        if (name != "params") continue;
        pugi::xml_node map = arg.child("ListElem").child("ListElem").child("MapElem");
        for (pugi::xml_node child : map.children("child")) {
            if (call.params.size() >= kMaxCertParams) break;
            pugi::xml_node value = child.first_child();
            while (value && value.type() != pugi::node_element) value = value.next_sibling();
            call.params.push_back({child.attribute("name").value(), value.name(), value.child_value()});
        }
    }
    return call;
}

}  // namespace corvelsim
