#include "cert/CertRequests.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

#include "common/Console.h"
#include "npa/NpaFrame.h"

namespace certreq {

const char* const kDeleteIndividualCA =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><method name=\"callMethod\" requestID=\"410\">"
    "<arg name=\"objName\">applications.certMgr</arg><arg name=\"method\">deleteIndividualCA</arg>"
    "<arg name=\"params\"><ListElem><ListElem><MapElem><child name=\"ca_common_name\"><StringElem>"
    "%s</StringElem></child></MapElem></ListElem></ListElem></arg></method>";
const char* const kDeleteIndividualCert =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><method name=\"callMethod\" requestID=\"510\">"
    "<arg name=\"objName\">applications.certMgr</arg><arg name=\"method\">deleteIndividualCert</arg>"
    "<arg name=\"params\"><ListElem><ListElem><MapElem><child name=\"cert_friendly_name\"><StringElem>"
    "%s</StringElem></child></MapElem></ListElem></ListElem></arg></method>";
const char* const kReadCertDefaults =
    "<?xml version=\"1.0\"?><method name=\"callMethod\" requestID=\"100\"><arg name=\"objName\">"
    "applications.certMgr</arg><arg name=\"method\">readCertDefaults</arg><arg name=\"params\"><ListElem>"
    "<ListElem><MapElem></MapElem></ListElem></ListElem></arg></method>";
const char* const kUploadSignedCertFile =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><method name=\"callMethod\" requestID=\"500\">"
    "<arg name=\"objName\">applications.certMgr</arg><arg name=\"method\">uploadSignedCertFile</arg>"
    "<arg name=\"params\"><ListElem><ListElem><MapElem><child name=\"cert_friendly_name\"><StringElem>"
    "%s</StringElem></child><child name=\"cert_syst_dot_pem_size\"><IntegerElem>%d</IntegerElem></child>"
    "<child name=\"cert_syst_dot_pem_file\"><BinaryElem>%s</BinaryElem></child></MapElem></ListElem>"
    "</ListElem></arg></method>";
const char* const kQueryCAInfo =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><method name=\"callMethod\" requestID=\"430\">"
    "<arg name=\"objName\">applications.certMgr</arg><arg name=\"method\">queryCAInfo</arg>"
    "<arg name=\"params\"><ListElem><ListElem><MapElem><child name=\"ca_common_name\"><StringElem>"
    "%s</StringElem></child></MapElem></ListElem></ListElem></arg></method>";
const char* const kQueryCertList =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><method name=\"callMethod\" requestID=\"520\">"
    "<arg name=\"objName\">applications.certMgr</arg><arg name=\"method\">queryCertList</arg>"
    "<arg name=\"params\"><ListElem><ListElem></ListElem></ListElem></arg></method>";
const char* const kQueryCAList =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><method name=\"callMethod\" requestID=\"420\">"
    "<arg name=\"objName\">applications.certMgr</arg><arg name=\"method\">queryCAList</arg>"
    "<arg name=\"params\"><ListElem><ListElem></ListElem></ListElem></arg></method>";
const char* const kUploadNewCAFile =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><method name=\"callMethod\" requestID=\"400\">"
    "<arg name=\"objName\">applications.certMgr</arg><arg name=\"method\">uploadNewCAFile</arg>"
    "<arg name=\"params\"><ListElem><ListElem><MapElem><child name=\"ca_file_name\"><StringElem>"
    "%s</StringElem></child><child name=\"ca_dot_pem_size\"><IntegerElem>%d</IntegerElem></child>"
    "<child name=\"ca_dot_pem_file\"><BinaryElem>%s</BinaryElem></child></MapElem></ListElem></ListElem>"
    "</arg></method>";
const char* const kExportPubKey =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><method name=\"callMethod\" requestID=\"210\">"
    "<arg name=\"objName\">applications.certMgr</arg><arg name=\"method\">exportPubKey</arg>"
    "<arg name=\"params\"><ListElem><ListElem><MapElem><child name=\"cert_friendly_name\"><StringElem>"
    "%s</StringElem></child></MapElem></ListElem></ListElem></arg></method>";
const char* const kGenerateNewCert =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?><method name=\"callMethod\" requestID=\"200\">"
    "<arg name=\"objName\">applications.certMgr</arg><arg name=\"method\">generateNewCert</arg>"
    "<arg name=\"params\"><ListElem><ListElem><MapElem><child name=\"cert_friendly_name\"><StringElem>"
    "%s</StringElem></child><child name=\"x509_O\"><StringElem>%s</StringElem></child>"
    "<child name=\"x509_AN\"><StringElem>%s</StringElem></child><child name=\"x509_C\"><StringElem>"
    "%s</StringElem></child><child name=\"x509_CN\"><StringElem>%s</StringElem></child>"
    "<child name=\"x509_L\"><StringElem>%s</StringElem></child><child name=\"x509_OU\"><StringElem>"
    "%s</StringElem></child><child name=\"x509_ST\"><StringElem>%s</StringElem></child></MapElem>"
    "</ListElem></ListElem></arg></method>";

namespace {

// The first packet of every request: length 16, the drop flags, then seven
// bytes each followed by its complement and one closing byte.
// clang-format off
const uint8_t kOpeningPacket[19] = {npa::kStartByte, 0x00, 0x10, npa::kFlagDropAndEnd, 0x3C, 0xC3, 0x3C, 0xC3, 0x21,
                                    0xDE, 0x3C, 0xC3, 0x22, 0xDD, 0x01, 0xFE, 0x24, 0xDB, 0x5D};
// What follows the command bytes in a request and opens an answer.
const uint8_t kCallMarker[2] = {0x00, 0x01};
const uint8_t kAnswerEnvelope[7] = {npa::kCertManagerCommand[0], npa::kCertManagerCommand[1],
                                    npa::kCertManagerCommand[2], kCallMarker[0], kCallMarker[1], 0x00, 0xE0};
// clang-format on
constexpr uint8_t kLeftOut = 0xE0;

}  // namespace

bool formatRequest(char* buffer, size_t capacity, const char* method, const char* format, ...)
{
    std::memset(buffer, 0, capacity);
    va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(buffer, capacity, format, values);
    va_end(values);
    if (length < 0 || static_cast<size_t>(length) >= capacity) {
        std::memset(buffer, 0, capacity);
        traceF("D [CVL] The %s request does not fit its %zu-byte buffer!\n", method, capacity);
        return false;
    }
    return true;
}

std::vector<uint8_t> buildRequestPacket(const char* text)
{
    const size_t length = std::strlen(text);
    std::vector<uint8_t> body(sizeof kCallMarker + length);
    std::copy(std::begin(kCallMarker), std::end(kCallMarker), body.begin());
    std::copy(text, text + length, body.begin() + sizeof kCallMarker);
    const std::vector<uint8_t> call = npa::frameRequest(npa::kCertManagerCommand, body);

    std::vector<uint8_t> packet(sizeof kOpeningPacket + call.size());
    std::copy(std::begin(kOpeningPacket), std::end(kOpeningPacket), packet.begin());
    std::copy(call.begin(), call.end(), packet.begin() + sizeof kOpeningPacket);
    return packet;
}

size_t unwrapAnswer(const uint8_t* answer, size_t length, char* out, size_t capacity)
{
    if (length < sizeof kAnswerEnvelope || capacity < length ||
        !std::equal(kAnswerEnvelope, kAnswerEnvelope + sizeof kAnswerEnvelope, answer)) {
        return 0;
    }
    std::memset(out, 0, capacity);
    size_t written = 0;
    for (size_t i = sizeof kAnswerEnvelope; i < length; ++i) {
        if (answer[i] != kLeftOut) {
            out[written++] = static_cast<char>(answer[i]);
        }
    }
    return written;
}

bool answerDocumentClosed(const std::vector<uint8_t>& content)
{
    if (content.size() < sizeof kAnswerEnvelope ||
        !std::equal(kAnswerEnvelope, kAnswerEnvelope + sizeof kAnswerEnvelope, content.begin())) {
        return false;
    }
    std::string text;
    for (size_t i = sizeof kAnswerEnvelope; i < content.size(); ++i) {
        if (content[i] != kLeftOut) {
            text.push_back(static_cast<char>(content[i]));
        }
    }
    // The root element: the first tag that is not a declaration, a
    // processing instruction or a comment.
    size_t open = text.find('<');
    while (open != std::string::npos && open + 1 < text.size() && (text[open + 1] == '?' || text[open + 1] == '!')) {
        open = text.find('<', open + 1);
    }
    if (open == std::string::npos) {
        return false;
    }
    const size_t nameEnd = text.find_first_of(" \t\r\n/>", open + 1);
    if (nameEnd == std::string::npos || nameEnd == open + 1) {
        return false;
    }
    const std::string closing = "</" + text.substr(open + 1, nameEnd - open - 1) + ">";
    const size_t last = text.find_last_not_of(std::string(" \t\r\n\0", 5));
    if (last == std::string::npos) {
        return false;
    }
    const std::string trimmed = text.substr(0, last + 1);
    return trimmed.size() >= closing.size() &&
           trimmed.compare(trimmed.size() - closing.size(), closing.size(), closing) == 0;
}

}  // namespace certreq
