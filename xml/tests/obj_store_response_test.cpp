// Reading the certificate manager's answers: the status, the fields gated by a
// status of exactly "1", the name lists and the CSR file.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "tests/support/CertAnswers.h"
#include "xml/ObjStoreResponse.h"

namespace {

std::string answer(const std::string& fields)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><response><MapElem>" + fields + "</MapElem></response>";
}

std::string status(const std::string& code) { return xmlChild("status_code", "IntegerElem", code); }

ObjStoreResponse responseOf(const std::string& xml)
{
    ObjStoreResponse response;
    response.setResponse(xml.c_str());
    return response;
}

TEST(ObjStoreResponse, StatusCodeAndMessage)
{
    // clang-format off
    const struct {
        std::string xml;
        int code;
        const char* message;
    } cases[] = {
        {answer(stringChild("status_mesg", "Bad &quot;file&quot;") + status("-7")), -7, "Bad \"file\""},
        {answer(status("1 ")), 1, ""},
        {answer(status("abc")), 0, ""},
        {answer(status("99999999999999999999")), INT_MAX, ""},
        {answer(status("3") + status("4")), 3, ""},
    };
    // clang-format on
    for (const auto& c : cases) {
        const ObjStoreResponse response = responseOf(c.xml);
        EXPECT_EQ(response.getStatusCode(), c.code) << c.xml;
        EXPECT_EQ(response.getStatusMessage(), c.message) << c.xml;
    }
}

TEST(ObjStoreResponse, FieldsOnlyWithStatusTextExactlyOne)
{
    const std::string fields =
        stringChild("x509_O", "Acme &amp; Co") + stringChild("x509_OU", "Lab") + stringChild("x509_C", "DE") +
        stringChild("x509_ST", "Berlin") + stringChild("x509_L", "Mitte") + stringChild("x509_CN", "printer") +
        stringChild("x509_AN", "alt") + stringChild("ca_file_name", "ca.pem") +
        stringChild("ca_common_name", "Root CA") +
        xmlChild("cert_list", "ListElem", "<StringElem>n1</StringElem><StringElem>n2</StringElem>");
    for (const char* code : {"1", "01", "1 "}) {
        const bool open = std::string(code) == "1";
        const ObjStoreResponse response = responseOf(answer(status(code) + fields));
        std::string s[7] = {"o", "ou", "c", "st", "l", "cn", "an"};
        EXPECT_EQ(response.getCertDefaults(s[0], s[1], s[2], s[3], s[4], s[5], s[6]), open ? 1 : 0) << code;
        std::string file = "f", path = "p", name = "n";
        response.getCAFileInfo(file, path, name);
        std::vector<std::string> certs = {"old"}, cas = {"old"};
        response.getCertList(certs);
        response.getCAList(cas);
        const std::vector<std::string> names =
            open ? std::vector<std::string>{"n1", "n2"} : std::vector<std::string>{"old"};
        EXPECT_EQ(s[0] + s[1] + s[2] + s[3] + s[4] + s[5] + s[6],
                  open ? "Acme & CoLabDEBerlinMitteprinteralt" : "ooucstlcnan")
            << code;
        EXPECT_EQ(file + "|" + path + "|" + name, open ? "ca.pem||Root CA" : "f|p|n") << code;
        EXPECT_EQ(certs, names) << code;
        EXPECT_EQ(cas, names) << code;
    }
}

TEST(ObjStoreResponse, ListStopsAtTheFirstEmptyNameAndAtNineUnlessReadWhole)
{
    std::vector<std::string> twelve;
    for (int i = 1; i <= 12; ++i) twelve.push_back("R&amp;D " + std::to_string(i));
    std::vector<std::string> twelveDecoded;
    for (int i = 1; i <= 12; ++i) twelveDecoded.push_back("R&D " + std::to_string(i));
    // clang-format off
    const struct {
        std::string xml;
        std::vector<std::string> firstNine, whole;
    } cases[] = {
        {listAnswerXml({"a", "", "c"}), {"a"}, {"a"}},
        {listAnswerXml(twelve), {twelveDecoded.begin(), twelveDecoded.begin() + 9}, twelveDecoded},
        // Only the list field's items count, not the text nested in them or other fields.
        {answer(status("1") + stringChild("cert_friendly_name", "x") +
                xmlChild("cert_list", "ListElem", "<StringElem>a<b>c</b></StringElem><StringElem>d</StringElem>")),
         {"a", "d"}, {"a", "d"}},
        {answer(status("2") + xmlChild("cert_list", "ListElem", "<StringElem>a</StringElem>")), {"stale"}, {"stale"}},
        {answer(status("1") + xmlChild("cert_list", "ListElem", "<StringElem>a</Wrong>")), {}, {}},
    };
    // clang-format on
    for (const auto& c : cases) {
        std::vector<std::string> firstNine = {"stale"}, whole = {"stale"};
        responseOf(c.xml).getCertList(firstNine);
        responseOf(c.xml).getWholeList(whole);
        EXPECT_EQ(firstNine, c.firstNine) << c.xml;
        EXPECT_EQ(whole, c.whole) << c.xml;
    }
}

TEST(ObjStoreResponse, CSRFileDecodesIntoCapacityAndFriendlyName)
{
    const ObjStoreResponse response =
        responseOf(answer(status("1") + xmlChild("cert_dot_csr_file", "BinaryElem", "LS0tLS1CRUdJTg==")));
    unsigned char buffer[16] = {};
    EXPECT_EQ(response.getCSRFile(buffer, 10), 10);
    EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 10), "-----BEGIN");
    EXPECT_EQ(response.getCSRFile(buffer, 9), 0);
    EXPECT_EQ(
        responseOf(answer(status("2") + xmlChild("cert_dot_csr_file", "BinaryElem", "QQ=="))).getCSRFile(buffer, 16),
        0);

    EXPECT_EQ(responseOf(answer(stringChild("cert_friendly_name", "  wifi cert "))).getFriendlyName(), "wifi cert ");
}

}  // namespace
