#include "xml/ObjStoreResponse.h"

#include <cstdio>

#include "common/Base64.h"
#include "common/LeadingNumber.h"
#include "xml/NameList.h"
#include "xml/SimpleXPath.h"

namespace {

const char* const kStatusCodePath = "/response/MapElem/child[@name='status_code']/IntegerElem";
const char* const kStatusMessagePath = "/response/MapElem/child[@name='status_mesg']/StringElem";
const char* const kFriendlyNamePath = "/response/MapElem/child[@name='cert_friendly_name']/StringElem";
const char* const kCAFileNamePath = "/response/MapElem/child[@name='ca_file_name']/StringElem";
const char* const kCAPemPathPath = "/response/MapElem/child[@name='ca_dot_pem_path']/StringElem";
const char* const kCACommonNamePath = "/response/MapElem/child[@name='ca_common_name']/StringElem";
const char* const kCSRFilePath = "/response/MapElem/child[@name='cert_dot_csr_file']/BinaryElem";
const char* const kOrganizationPath = "/response/MapElem/child[@name='x509_O']/StringElem";
const char* const kUnitPath = "/response/MapElem/child[@name='x509_OU']/StringElem";
const char* const kCountryPath = "/response/MapElem/child[@name='x509_C']/StringElem";
const char* const kStatePath = "/response/MapElem/child[@name='x509_ST']/StringElem";
const char* const kLocalityPath = "/response/MapElem/child[@name='x509_L']/StringElem";
const char* const kCommonNamePath = "/response/MapElem/child[@name='x509_CN']/StringElem";
const char* const kAltNamePath = "/response/MapElem/child[@name='x509_AN']/StringElem";
const char* const kListItemFormat = "/response/MapElem/child[@name='cert_list']/ListElem/StringElem[%d]";

}  // namespace

void ObjStoreResponse::setResponse(const char* xml) { m_Response = xml == nullptr ? "" : xml; }

int ObjStoreResponse::getStatusCode() const
{
    return readLeadingNumber(simpleXPath(m_Response).evaluate(kStatusCodePath)).value;
}

std::string ObjStoreResponse::getStatusMessage() const { return simpleXPath(m_Response).evaluate(kStatusMessagePath); }

std::string ObjStoreResponse::getFriendlyName() const { return simpleXPath(m_Response).evaluate(kFriendlyNamePath); }

// Success is the text "1" exactly: "01" or "1 " do not count.
bool ObjStoreResponse::statusIsSuccess() const { return simpleXPath(m_Response).evaluate(kStatusCodePath) == "1"; }

void ObjStoreResponse::getCAFileInfo(std::string& fileName, std::string& path, std::string& commonName) const
{
    if (!statusIsSuccess()) {
        return;
    }
    simpleXPath answer(m_Response);
    fileName = answer.evaluate(kCAFileNamePath);
    path = answer.evaluate(kCAPemPathPath);
    commonName = answer.evaluate(kCACommonNamePath);
}

int ObjStoreResponse::getCSRFile(unsigned char* buffer, uint32_t capacity) const
{
    if (!statusIsSuccess()) {
        return 0;
    }
    const std::string encoded = simpleXPath(m_Response).evaluate(kCSRFilePath);
    const int count = Base64::decode(encoded.c_str(), buffer, capacity);
    return count < 0 ? 0 : count;
}

int ObjStoreResponse::getCertDefaults(std::string& organization, std::string& unit, std::string& country,
                                      std::string& state, std::string& locality, std::string& commonName,
                                      std::string& altName) const
{
    if (!statusIsSuccess()) {
        return 0;
    }
    simpleXPath answer(m_Response);
    organization = answer.evaluate(kOrganizationPath);
    unit = answer.evaluate(kUnitPath);
    country = answer.evaluate(kCountryPath);
    state = answer.evaluate(kStatePath);
    locality = answer.evaluate(kLocalityPath);
    commonName = answer.evaluate(kCommonNamePath);
    altName = answer.evaluate(kAltNamePath);
    return 1;
}

void ObjStoreResponse::getCertList(std::vector<std::string>& names) const { readNameList(names); }

void ObjStoreResponse::getCAList(std::vector<std::string>& names) const { readNameList(names); }

// Items 1, 2, ... until the first missing or empty one. Position predicates
// stop at 9, so a list gives at most nine names.
void ObjStoreResponse::readNameList(std::vector<std::string>& names) const
{
    if (!statusIsSuccess()) {
        return;
    }
    names.clear();
    simpleXPath answer(m_Response);
    for (int item = 1;; ++item) {
        char path[256] = {};
        std::snprintf(path, sizeof path, kListItemFormat, item);
        std::string name = answer.evaluate(path);
        if (name.empty()) {
            break;
        }
        names.push_back(std::move(name));
    }
}

void ObjStoreResponse::getWholeList(std::vector<std::string>& names) const
{
    if (statusIsSuccess()) {
        names = readWholeNameList(m_Response);
    }
}
