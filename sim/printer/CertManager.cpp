#include "sim/printer/CertManager.h"

#include <pugixml.hpp>

#include <sstream>

#include "sim/wire/Base64.h"

namespace corvelsim {

namespace {

// Builds <response><MapElem> with one typed child per field.
class AnswerBuilder {
public:
    AnswerBuilder()
    {
        pugi::xml_node declaration = m_Document.append_child(pugi::node_declaration);
        declaration.append_attribute("version") = "1.0";
        declaration.append_attribute("encoding") = "UTF-8";
        m_Map = m_Document.append_child("response").append_child("MapElem");
    }

    void add(const char* name, const char* type, const std::string& value)
    {
        pugi::xml_node child = m_Map.append_child("child");
        child.append_attribute("name") = name;
        child.append_child(type).text() = value.c_str();
    }

    void addList(const char* name, const std::vector<std::string>& items)
    {
        pugi::xml_node child = m_Map.append_child("child");
        child.append_attribute("name") = name;
        pugi::xml_node list = child.append_child("ListElem");
        for (const std::string& item : items) list.append_child("StringElem").text() = item.c_str();
    }

    CertAnswer finish(const CertResult& result)
    {
        // The status goes first, whatever was added before.
        pugi::xml_node message = m_Map.prepend_child("child");
        message.append_attribute("name") = "status_mesg";
        message.append_child("StringElem").text() = (result.code == kCertOk ? "OK" : result.message.c_str());
        pugi::xml_node code = m_Map.prepend_child("child");
        code.append_attribute("name") = "status_code";
        code.append_child("IntegerElem").text() = result.code;
        std::ostringstream out;
        m_Document.save(out, "", pugi::format_raw | pugi::format_no_empty_element_tags, pugi::encoding_utf8);
        return {result.code, asciiXml(out.str())};
    }

private:
    pugi::xml_document m_Document;
    pugi::xml_node m_Map;
};

CertResult missing(const char* name) { return {kCertBadCall, std::string("parameter ") + name + " is missing"}; }

// The file a BinaryElem carries and the size its IntegerElem announces.
CertResult uploadedFile(const CertMgrCall& call, const char* sizeName, const char* fileName, std::string& file)
{
    const std::string* size = call.param(sizeName);
    const std::string* encoded = call.param(fileName);
    if (!size) return missing(sizeName);
    if (!encoded) return missing(fileName);
    if (!base64Decode(*encoded, file)) return {kCertBadCall, std::string(fileName) + " is not Base64"};
    if (*size != std::to_string(file.size()))
        return {kCertRefused, std::string(sizeName) + " says " + size->substr(0, 20) + " bytes, the file has " +
                                  std::to_string(file.size())};
    return {};
}

}  // namespace

std::string asciiXml(const std::string& xml)
{
    std::string out;
    out.reserve(xml.size());
    for (size_t i = 0; i < xml.size();) {
        auto byte = static_cast<unsigned char>(xml[i]);
        if (byte < 0x80) {
            out += char(byte);
            ++i;
            continue;
        }
        size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 0;
        unsigned long code = length == 4 ? byte & 0x07 : length == 3 ? byte & 0x0F : byte & 0x1F;
        bool valid = length != 0 && byte < 0xF5 && i + length <= xml.size();
        for (size_t k = 1; valid && k < length; ++k) {
            auto next = static_cast<unsigned char>(xml[i + k]);
            valid = (next & 0xC0) == 0x80;
            code = (code << 6) | (next & 0x3F);
        }
        // Overlong forms and surrogates are not characters either.
        static const unsigned long kLowest[] = {0, 0, 0x80, 0x800, 0x10000};
        valid = valid && code >= kLowest[length] && code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
        out += "&#" + std::to_string(valid ? code : 0xFFFD) + ";";
        i += valid ? length : 1;
    }
    return out;
}

CertAnswer statusAnswer(int code, const std::string& message) { return AnswerBuilder().finish({code, message}); }

CertAnswer CertManager::answer(const CertMgrCall& call)
{
    AnswerBuilder answer;
    CertStore& store = m_State.certs;
    const std::string& method = call.method;
    const std::string* friendlyName = call.param("cert_friendly_name");
    const std::string* caName = call.param("ca_common_name");
    CertResult result;

    if (!call.wellFormed) {
        result = {kCertBadCall, "the call is not well-formed XML"};
    } else if (call.object != "applications.certMgr") {
        result = {kCertBadCall, "unknown object '" + call.object.substr(0, 64) + "'"};
    } else if (method == "readCertDefaults") {
        const Subject& subject = m_State.defaultSubject;
        answer.add("x509_O", "StringElem", subject.O);
        answer.add("x509_OU", "StringElem", subject.OU);
        answer.add("x509_C", "StringElem", subject.C);
        answer.add("x509_ST", "StringElem", subject.ST);
        answer.add("x509_L", "StringElem", subject.L);
        answer.add("x509_CN", "StringElem", subject.CN);
        answer.add("x509_AN", "StringElem", subject.AN);
    } else if (method == "generateNewCert") {
        Subject subject;
        const std::pair<const char*, std::string*> fields[] = {
            {"x509_O", &subject.O}, {"x509_OU", &subject.OU}, {"x509_C", &subject.C},  {"x509_ST", &subject.ST},
            {"x509_L", &subject.L}, {"x509_CN", &subject.CN}, {"x509_AN", &subject.AN}};
        for (const auto& [name, field] : fields) {
            if (const std::string* value = call.param(name)) *field = *value;
        }
        bool noSubject = subject.O.empty() && subject.OU.empty() && subject.C.empty() && subject.ST.empty() &&
                         subject.L.empty() && subject.CN.empty();
        if (!friendlyName || friendlyName->empty())
            result = missing("cert_friendly_name");
        else {
            if (noSubject) subject.CN = *friendlyName;  // a request needs some subject
            result = store.generate(*friendlyName, subject);
        }
    } else if (method == "exportPubKey") {
        const PendingKey* key = friendlyName ? store.pendingKey(*friendlyName) : nullptr;
        if (!friendlyName)
            result = missing("cert_friendly_name");
        else if (!key)
            result = noPendingKey(*friendlyName);
        else {
            answer.add("cert_friendly_name", "StringElem", key->friendlyName);
            answer.add("cert_dot_csr_file", "BinaryElem", base64Encode(key->requestPem));
        }
    } else if (method == "uploadSignedCertFile") {
        std::string file;
        result = uploadedFile(call, "cert_syst_dot_pem_size", "cert_syst_dot_pem_file", file);
        if (!friendlyName)
            result = missing("cert_friendly_name");
        else if (result.code == kCertOk)
            result = store.installSigned(*friendlyName, file);
    } else if (method == "deleteIndividualCert") {
        result = friendlyName ? store.removeSigned(*friendlyName) : missing("cert_friendly_name");
    } else if (method == "queryCertList") {
        std::vector<std::string> names;
        for (const SignedCert& cert : store.signedCerts) names.push_back(cert.friendlyName);
        answer.addList("cert_list", names);
    } else if (method == "uploadNewCAFile") {
        std::string file;
        result = uploadedFile(call, "ca_dot_pem_size", "ca_dot_pem_file", file);
        const std::string* fileName = call.param("ca_file_name");
        if (!fileName)
            result = missing("ca_file_name");
        else if (result.code == kCertOk)
            result = store.installCA(*fileName, file);
        if (result.code == kCertOk) answer.add("ca_common_name", "StringElem", store.cas.back().name);
    } else if (method == "deleteIndividualCA") {
        result = caName ? store.removeCA(*caName) : missing("ca_common_name");
    } else if (method == "queryCAInfo") {
        const CaCert* ca = caName ? store.ca(*caName) : nullptr;
        if (!caName)
            result = missing("ca_common_name");
        else if (!ca)
            result = {kCertNotFound, "no CA named '" + shownName(*caName) + "'"};
        else {
            answer.add("ca_file_name", "StringElem", ca->fileName);
            answer.add("ca_dot_pem_path", "StringElem", "/var/certs/ca/" + ca->name + ".pem");
            answer.add("ca_common_name", "StringElem", ca->commonName);
        }
    } else if (method == "queryCAList") {
        std::vector<std::string> names;
        for (const CaCert& ca : store.cas) names.push_back(ca.name);
        answer.addList("cert_list", names);
    } else {
        result = {kCertBadCall, "unknown method '" + method.substr(0, 64) + "'"};
    }
    return answer.finish(result);
}

}  // namespace corvelsim
