#include "sim/CertMgrCall.h"

#include <pugixml.hpp>

namespace corvelsim {

std::string certMgrMethodName(const std::string& xml)
{
    pugi::xml_document document;
    if (!document.load_buffer(xml.data(), xml.size())) return {};
    pugi::xml_node method = document.child("method");
    for (pugi::xml_node arg : method.children("arg")) {
        if (std::string(arg.attribute("name").value()) == "method") return arg.text().get();
    }
    return {};
}

}  // namespace corvelsim
