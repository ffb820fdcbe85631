// The certificate-manager methods: each formats its request, exchanges it
// with the printer and judges the XML answer by its status code.
#include "cert/CertMgr.h"

#include <cstdio>
#include <cstring>

#include "common/Base64.h"
#include "cert/CertRequests.h"
#include "common/Console.h"
#include "npa/NPAChannel.h"
#include "xml/ObjStoreResponse.h"

using namespace certreq;

const char* const CertMgr::defaultFriendlyName = "CorvelRadioHelper";

namespace {

constexpr int kTimeLimitSeconds = 5;
constexpr int kSlowTimeLimitSeconds = 10;  // key generation and export
constexpr int32_t kFileBufferSize = 16384;
// With large files: a file of 48,000 bytes is 64,000 characters in Base64
// (and its terminator); its request, with the XML and a file name of up to
// 255 bytes, stays within what one packet's 16-bit length can carry.
constexpr int32_t kLargeFileBufferSize = 64004;
constexpr size_t kLargeFileRequest = 65400;
constexpr size_t kLongestFriendlyName = 31;

// The friendly name to send: the default when none is given. Null for a
// given name longer than the printer keeps (reported).
const char* friendlyNameOrDefault(const char* given)
{
    if (given == nullptr) {
        return CertMgr::defaultFriendlyName;
    }
    if (std::strlen(given) > kLongestFriendlyName) {
        traceF("D [CVL] Friendly name '%s' is longer than %zu characters!\n", given, kLongestFriendlyName);
        return nullptr;
    }
    return given;
}

// Writes the method's error line with the status code, then the printer's
// status message; returns -1.
int reportFailure(const ObjStoreResponse& response, const char* errorLine, const char* messageLine)
{
    traceF(errorLine, response.getStatusCode());
    traceF(messageLine, response.getStatusMessage().c_str());
    return -1;
}

// A certificate file read whole and Base64-encoded, as the upload requests
// carry it; `size` is 0 when the file is missing, empty, too large, or its
// text does not fit the encoding buffer (nothing is sent then).
struct EncodedFile {
    EncodedFile(const std::string& path, int32_t capacity) : text(static_cast<size_t>(capacity), 0)
    {
        std::vector<uint8_t> bytes(static_cast<size_t>(capacity), 0);
        const int loaded = CertMgr::loadFromFile(bytes.data(), capacity, path);
        if (loaded > 0 &&
            Base64::encode(bytes.data(), static_cast<uint32_t>(loaded), text.data(), static_cast<uint32_t>(capacity))) {
            size = loaded;
        }
    }
    int size = 0;
    std::vector<char> text;
};

}  // namespace

std::unique_ptr<CertMgr> CertMgr::create(const std::string& usbPath)
{
    // Checked before the channel takes its reference on the transport.
    return usbPath.empty() ? reportNoDevice() : create(std::make_unique<NPAChannel>(usbPath));
}

std::unique_ptr<CertMgr> CertMgr::create(std::unique_ptr<NPAChannel> channel)
{
    return channel->getDevicePath().empty() ? reportNoDevice() : std::make_unique<CertMgr>(std::move(channel));
}

std::unique_ptr<CertMgr> CertMgr::reportNoDevice()
{
    traceF("D [CVL] Error: No USB device is specified!\n");
    return nullptr;
}

CertMgr::CertMgr(std::unique_ptr<NPAChannel> channel) : npaChannel(std::move(channel)) {}

CertMgr::~CertMgr() = default;

int CertMgr::sendRequest(const char* request, std::string& answerText, int timeLimitSeconds)
{
    const std::vector<uint8_t> packet = buildRequestPacket(request);
    std::vector<uint8_t> answer;
    const int32_t count = npaChannel->exchangeNPA(packet.data(), static_cast<int32_t>(packet.size()), answer,
                                                  timeLimitSeconds, answerDocumentClosed);
    if (count > 0) {
        std::vector<char> text(static_cast<size_t>(count), 0);
        unwrapAnswer(answer.data(), answer.size(), text.data(), text.size());
        answerText = text.data();
    }
    return count;
}

// Sends the request and gives the printer's answer to `response`; false when
// no answer came (the exchange has reported that).
bool CertMgr::exchange(const char* request, int timeLimitSeconds, ObjStoreResponse& response)
{
    std::string answerText;
    if (sendRequest(request, answerText, timeLimitSeconds) <= 0) {
        return false;
    }
    response.setResponse(answerText.c_str());
    return true;
}

int CertMgr::call(const char* request, int timeLimitSeconds, ObjStoreResponse& response, const char* errorLine,
                  const char* messageLine)
{
    if (!exchange(request, timeLimitSeconds, response)) return -1;
    m_LastStatus = {response.getStatusCode(), response.getStatusMessage()};
    return response.getStatusCode() == 1 ? 0 : reportFailure(response, errorLine, messageLine);
}

int CertMgr::deleteCACert(const std::string& caName)
{
    char request[kRequest];
    ObjStoreResponse response;
    if (!formatRequest(request, sizeof request, "deleteIndividualCA", kDeleteIndividualCA,
                       requestName(caName).c_str())) {
        return -1;
    }
    return call(request, kTimeLimitSeconds, response, "D [CVL] Delete CA cert error %d\n");
}

int CertMgr::deleteSignedCert(const char* friendlyName)
{
    const char* name = friendlyNameOrDefault(friendlyName);
    char request[kRequest];
    ObjStoreResponse response;
    if (name == nullptr || !formatRequest(request, sizeof request, "deleteIndividualCert", kDeleteIndividualCert,
                                          requestName(name).c_str())) {
        return -1;
    }
    return call(request, kTimeLimitSeconds, response, "D [CVL] Delete signed cert error %d\n");
}

int CertMgr::getCertRequestDefaults(std::string& org, std::string& unit, std::string& country, std::string& state,
                                    std::string& city, std::string& common, std::string& altname)
{
    ObjStoreResponse response;
    if (!exchange(kReadCertDefaults, kTimeLimitSeconds, response)) {
        return -1;
    }
    m_LastStatus = {response.getStatusCode(), response.getStatusMessage()};
    if (response.getCertDefaults(org, unit, country, state, city, common, altname) != 1) {
        return reportFailure(response, "D [CVL] Get cert request defaults error %d\n", "D [CVL] %s\n");
    }
    return 0;
}

int CertMgr::installSignedCert(const std::string& path, const char* friendlyName)
{
    const char* name = friendlyNameOrDefault(friendlyName);
    if (name == nullptr) {
        return -1;
    }
    const EncodedFile file(path, fileCapacity());
    std::vector<char> request(requestCapacity(), 0);
    ObjStoreResponse response;
    if (file.size <= 0 || !formatRequest(request.data(), request.size(), "uploadSignedCertFile", kUploadSignedCertFile,
                                         requestName(name).c_str(), file.size, file.text.data())) {
        return -1;
    }
    return call(request.data(), kTimeLimitSeconds, response, "D [CVL] Install Signed Cert error %d\n");
}

int CertMgr::getCAInfo(const std::string& caName, std::string& fileName, std::string& pemPath, std::string& commonName)
{
    char request[kSmallRequest];
    ObjStoreResponse response;
    if (!formatRequest(request, sizeof request, "queryCAInfo", kQueryCAInfo, requestName(caName).c_str()) ||
        call(request, kTimeLimitSeconds, response, "D [CVL] getCAInfo error %d\n") != 0) {
        return -1;
    }
    response.getCAFileInfo(fileName, pemPath, commonName);
    return 0;
}

int CertMgr::getFriendlyNameList(std::vector<std::string>& names)
{
    ObjStoreResponse response;
    if (call(kQueryCertList, kTimeLimitSeconds, response, "D [CVL] Error getting list of friendly names %d\n") != 0) {
        return -1;
    }
    if (m_WholeLists) {
        response.getWholeList(names);
    } else {
        response.getCertList(names);
    }
    traceF("D [CVL] List of friendly names (%d):\n", static_cast<int>(names.size()));
    for (size_t i = 0; i < names.size(); ++i) {
        traceF("D [CVL] [%d] %s\n", static_cast<int>(i), names[i].c_str());
    }
    return 0;
}

int CertMgr::getCACommonNameList(std::vector<std::string>& names)
{
    ObjStoreResponse response;
    if (call(kQueryCAList, kTimeLimitSeconds, response, "D [CVL] getCACommonNameList error %d\n") != 0) {
        return -1;
    }
    if (m_WholeLists) {
        response.getWholeList(names);
    } else {
        response.getCAList(names);
    }
    return 0;
}

int CertMgr::removeExistingCA(const std::string& path)
{
    std::string commonName, caName;
    readPemSubject(path, commonName, caName);
    if (caName.empty()) {
        return 0;  // not a certificate whose CA name could be derived
    }
    traceF("D [CVL] CA Common name to match: '%s'\n", caName.c_str());
    std::vector<std::string> names;
    getCACommonNameList(names);
    for (const std::string& name : names) {
        if (name == caName) {
            traceF("D [CVL] CA cert exist! Removing...\n");
            return deleteCACert(caName) == 0 ? 1 : 0;  // only the first of equal names
        }
    }
    return 0;
}

int CertMgr::installCACert(const std::string& path)
{
    const size_t slash = path.rfind('/');
    const std::string fileName = slash == std::string::npos ? path : path.substr(slash + 1);
    const EncodedFile file(path, fileCapacity());
    if (file.size <= 0) {
        return -1;
    }
    // Formatted before anything is deleted: a request that cannot be sent
    // must not cost the printer the CA it holds.
    std::vector<char> request(requestCapacity(), 0);
    if (!formatRequest(request.data(), request.size(), "uploadNewCAFile", kUploadNewCAFile,
                       requestName(fileName).c_str(), file.size, file.text.data())) {
        return -1;
    }
    m_ReplacedCA = removeExistingCA(path) == 1;
    ObjStoreResponse response;
    return call(request.data(), kTimeLimitSeconds, response, "D [CVL] Install CA Cert error %d\n");
}

int CertMgr::exportCertRequest(std::vector<uint8_t>& pem, const char* friendlyName)
{
    const char* name = friendlyNameOrDefault(friendlyName);
    char request[kRequest];
    ObjStoreResponse response;
    if (name == nullptr ||
        !formatRequest(request, sizeof request, "exportPubKey", kExportPubKey, requestName(name).c_str())) {
        return -1;
    }
    const char* const errorLine = "D [CVL] Save Cert Request error %d\n\n";
    if (call(request, kSlowTimeLimitSeconds, response, errorLine, "D [CVL] %s\n\n") != 0) {
        return -1;
    }
    pem.assign(kFileBufferSize, 0);
    const int length = response.getCSRFile(pem.data(), kFileBufferSize);
    pem.resize(length > 0 ? static_cast<size_t>(length) : 0);
    return 0;
}

int CertMgr::saveCertRequest(const std::string& outputPath, const char* friendlyName)
{
    std::vector<uint8_t> csr;
    if (exportCertRequest(csr, friendlyName) != 0) {
        return -1;
    }
    return saveToFile(csr.data(), static_cast<int32_t>(csr.size()), outputPath) ? 0 : -1;
}

int CertMgr::createCertRequest(const std::string& org, const std::string& unit, const std::string& country,
                               const std::string& state, const std::string& city, const std::string& common,
                               const std::string& altname, const char* friendlyName)
{
    const char* name = friendlyNameOrDefault(friendlyName);
    char request[kRequest];
    if (name == nullptr || !formatRequest(request, sizeof request, "generateNewCert", kGenerateNewCert, name,
                                          escapeXml(org.c_str()).c_str(), escapeXml(altname.c_str()).c_str(),
                                          escapeXml(country.c_str()).c_str(), escapeXml(common.c_str()).c_str(),
                                          escapeXml(city.c_str()).c_str(), escapeXml(unit.c_str()).c_str(),
                                          escapeXml(state.c_str()).c_str())) {
        return -1;
    }
    // A certificate already stored under the friendly name goes first; when
    // there is none the printer says so and the request still follows.
    deleteSignedCert(name);
    ObjStoreResponse response;
    return call(request, kSlowTimeLimitSeconds, response, "D [CVL] Create Certificate Request error %d\n");
}

int32_t CertMgr::fileCapacity() const { return m_LargeFiles ? kLargeFileBufferSize : kFileBufferSize; }

size_t CertMgr::requestCapacity() const { return m_LargeFiles ? kLargeFileRequest : kFileRequest; }

std::string CertMgr::requestName(const std::string& name) const
{
    return m_EscapeNames ? escapeXml(name.c_str()) : name;
}

std::string CertMgr::escapeXml(const char* text)
{
    static const struct {
        char character;
        const char* entity;
    } kEscapes[] = {{'&', "&amp;"}, {'"', "&quot;"}, {'\'', "&apos;"}, {'<', "&lt;"}, {'>', "&gt;"}};
    std::string escaped = text == nullptr ? "" : text;
    // "&" goes first, so the "&" of entities put in later stays as it is.
    for (const auto& escape : kEscapes) {
        for (size_t at = escaped.find(escape.character); at != std::string::npos;
             at = escaped.find(escape.character, at + 1)) {
            escaped.replace(at, 1, escape.entity);
        }
    }
    return escaped;
}
