// The certificate manager's own rules: the 802.1x status table, the names CA
// certificates are listed by, which signed certificates are accepted, and
// answers that never carry a byte the utility would drop. Runs of the utility
// prove the ordinary paths and that the certificate manager's fault options
// change an answer as they say.
#include <gtest/gtest.h>

#include <pugixml.hpp>

#include "sim/printer/AuthStatus.h"
#include "sim/printer/CertManager.h"
#include "sim/printer/CertStore.h"
#include "sim/process/StateFile.h"
#include "tests/support/SelfSignedCert.h"

namespace corvelsim {
namespace {

TEST(AuthStatus, FirstRuleThatAppliesDecides)
{
    AuthFacts ready;  // would authenticate: 802.1x, PEAP with user and password
    ready.security8021x = true;
    ready.passwordEap = ready.hasUser = ready.hasPassword = true;
    // clang-format off
    const struct { const char* name; void (*change)(AuthFacts&); int status; } cases[] = {
        {"joined", [](AuthFacts& f) { f.joined = true; }, 2},
        {"not joined yet", [](AuthFacts&) {}, 10},
        {"not 802.1x", [](AuthFacts& f) { f.security8021x = false; f.validateCertificate = true; }, 0},
        {"validate without CA", [](AuthFacts& f) { f.validateCertificate = true; f.clientCert = ClientCert::Expired; }, 11},
        {"validate with CA", [](AuthFacts& f) { f.validateCertificate = f.caInstalled = f.joined = true; }, 2},
        {"certificate expired", [](AuthFacts& f) { f.clientCert = ClientCert::Expired; f.hasUser = false; }, 5},
        {"certificate not yet valid", [](AuthFacts& f) { f.clientCert = ClientCert::NotYetValid; }, 4},
        {"EAP-TLS without certificate", [](AuthFacts& f) { f.eapTls = true; f.hasPassword = false; }, 7},
        {"EAP-TLS with certificate", [](AuthFacts& f) { f.eapTls = true; f.passwordEap = false; f.clientCert = ClientCert::Valid; f.joined = true; }, 2},
        {"password EAP without password", [](AuthFacts& f) { f.hasPassword = false; }, 9},
        {"password EAP without user", [](AuthFacts& f) { f.hasUser = false; }, 9},
        {"no EAP type", [](AuthFacts& f) { f.passwordEap = false; f.joined = true; }, 8},
    };
    // clang-format on
    for (const auto& c : cases) {
        AuthFacts facts = ready;
        c.change(facts);
        EXPECT_EQ(authStatus(facts), c.status) << c.name;
    }
}

TEST(CertStore, ListsCAsByCommonNameAndValidity)
{
    // clang-format off
    const struct {
        SubjectFields subject;
        const char *notBefore, *notAfter, *name;
    } cases[] = {
        {{{"O", "Acme"}, {"CN", "Acme Root CA"}}, "100105000000Z", "20301231235959Z", "Acme Root CA_Jan__5_2010_To_Dec_31_2030"},
        {{{"CN", "Lab CA"}, {"emailAddress", "ca@lab"}}, "19991110120000Z", "20500209000000Z", "Lab CA_Nov_10_1999_To_Feb__9_2050"},
        {{{"CN", "First"}, {"CN", "Second"}}, "20240301000000Z", "20240331000000Z", "First_Mar__1_2024_To_Mar_31_2024"},
    };
    // clang-format on
    for (const auto& c : cases) {
        CertStore store;
        CertResult result = store.installCA("ca.pem", selfSignedPem(c.subject, c.notBefore, c.notAfter));
        ASSERT_EQ(result.code, kCertOk) << result.message;
        EXPECT_EQ(store.cas.back().name, c.name);
        EXPECT_EQ(store.installCA("again.pem", store.cas.back().certPem).code, kCertRefused) << "listed already";
        EXPECT_EQ(store.removeCA(c.name).code, kCertOk);
        EXPECT_EQ(store.removeCA(c.name).code, kCertNotFound);
    }
    CertStore store;
    EXPECT_EQ(store.installCA("o.pem", selfSignedPem({{"O", "No CN"}}, "20240301000000Z", "20250301000000Z")).code,
              kCertRefused);
    EXPECT_EQ(store.installCA("x.pem", "-----BEGIN CERTIFICATE-----\nAAAA\n-----END CERTIFICATE-----\n").code,
              kCertRefused);
    EXPECT_TRUE(store.cas.empty());
}

TEST(CertStore, AcceptsOnlyTheCertificateOfThePendingKey)
{
    CertStore store;
    ASSERT_EQ(store.generate("Radio", {"A&B", "", "DE", "", "", "printer-1", "printer-1.lab"}).code, kCertOk);
    ASSERT_EQ(store.generate("Other", {}).code, kCertOk);
    const std::string& requestPem = store.pendingKey("Radio")->requestPem;
    BIO* bio = BIO_new_mem_buf(requestPem.data(), int(requestPem.size()));
    X509_REQ* request = PEM_read_bio_X509_REQ(bio, nullptr, nullptr, nullptr);
    BIO_free(bio);
    ASSERT_NE(request, nullptr);
    EVP_PKEY* requestKey = X509_REQ_get_pubkey(request);
    const std::string forRadio = selfSignedPem({{"CN", "printer-1"}}, "20240101000000Z", "20990101000000Z", requestKey);
    EVP_PKEY_free(requestKey);
    X509_REQ_free(request);

    CertResult refused =
        store.installSigned("Radio", selfSignedPem({{"CN", "x"}}, "20240101000000Z", "20990101000000Z"));
    EXPECT_EQ(refused.code, kCertRefused);
    EXPECT_NE(refused.message.find("does not match"), std::string::npos) << refused.message;
    EXPECT_EQ(store.installSigned("Other", forRadio).code, kCertRefused) << "another name's key";
    EXPECT_EQ(store.installSigned("Nobody", forRadio).code, kCertNotFound);
    EXPECT_EQ(store.installSigned("Radio", "not a certificate").code, kCertRefused);
    EXPECT_TRUE(store.signedCerts.empty());

    EXPECT_EQ(store.installSigned("Radio", forRadio).code, kCertOk);
    ASSERT_NE(store.activeCert(), nullptr);
    EXPECT_EQ(store.activeCert()->friendlyName, "Radio");
    EXPECT_EQ(store.pendingKey("Radio"), nullptr) << "the key moved to the certificate";
    EXPECT_EQ(validityNow(store.activeCert()->certPem), Validity::Valid);
}

TEST(CertManager, AnswersInAsciiWhateverTheTextHolds)
{
    PrinterState state;
    state.defaultSubject.O = "Caf\xC3\xA9 \xE0\xA0\x80 \xF0\x9F\x96\xA8 <&> \xFF";
    CertMgrCall call;
    call.wellFormed = true;
    call.object = "applications.certMgr";
    call.method = "readCertDefaults";
    CertAnswer answer = CertManager(state).answer(call);
    for (unsigned char c : answer.xml) ASSERT_LT(c, 0x80) << answer.xml;
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(answer.xml.c_str())) << answer.xml;
    pugi::xml_node map = document.child("response").child("MapElem");
    EXPECT_STREQ(map.find_child_by_attribute("child", "name", "status_code").child_value("IntegerElem"), "1");
    EXPECT_STREQ(map.find_child_by_attribute("child", "name", "x509_O").child_value("StringElem"),
                 "Caf\xC3\xA9 \xE0\xA0\x80 \xF0\x9F\x96\xA8 <&> \xEF\xBF\xBD");

    call.method = "exportPubKey";
    answer = CertManager(state).answer(call);
    EXPECT_EQ(answer.statusCode, kCertBadCall);
    EXPECT_NE(answer.xml.find("cert_friendly_name is missing"), std::string::npos) << answer.xml;
}

}  // namespace
}  // namespace corvelsim
