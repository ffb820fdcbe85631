// The CA name derived from a PEM certificate, on certificates made here with
// OpenSSL, and the date pieces it is built from.
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <unistd.h>

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "cert/CertMgr.h"
#include "tests/support/CaptureOutput.h"

namespace {

using Fields = std::vector<std::pair<const char*, std::string>>;

// Writes a self-signed certificate with the subject `fields` and the raw
// validity texts (UTCTime when 13 long, else GeneralizedTime) to a temporary
// file; returns its path.
std::string writeCertificate(const Fields& fields, const std::string& notBefore, const std::string& notAfter)
{
    EVP_PKEY* key = EVP_EC_gen("P-256");
    X509* cert = X509_new();
    X509_set_version(cert, 2);
    X509_NAME* name = X509_get_subject_name(cert);
    for (const auto& [field, value] : fields) {
        // A plain string type, not MBSTRING_*: no length limit on the common name.
        X509_NAME_add_entry_by_txt(name, field, V_ASN1_UTF8STRING,
                                   reinterpret_cast<const unsigned char*>(value.c_str()), -1, -1, 0);
    }
    X509_set_issuer_name(cert, name);
    for (auto [time, text] :
         {std::make_pair(X509_getm_notBefore(cert), notBefore), std::make_pair(X509_getm_notAfter(cert), notAfter)}) {
        ASN1_STRING_set(time, text.c_str(), static_cast<int>(text.size()));  // as given, even when invalid
        time->type = text.size() == 13 ? V_ASN1_UTCTIME : V_ASN1_GENERALIZEDTIME;
    }
    X509_set_pubkey(cert, key);
    X509_sign(cert, key, EVP_sha256());
    char path[] = "/tmp/pem-subject-XXXXXX";
    const int fd = mkstemp(path);
    FILE* file = fdopen(fd, "w");
    PEM_write_X509(file, cert);
    std::fclose(file);
    X509_free(cert);
    EVP_PKEY_free(key);
    return path;
}

struct Case {
    const char* name;
    Fields fields;
    std::string notBefore, notAfter;
    int result;
    std::string commonName, caName;
};

TEST(PemSubject, CommonNameAndValidityMakeTheCAName)
{
    const std::string longName(228, 'n');
    // clang-format off
    const Case cases[] = {
        {"UTCTime and GeneralizedTime", {{"O", "Acme"}, {"CN", "Acme Root"}}, "100105000000Z", "20501231235959Z", 0,
         "Acme Root", "Acme Root_Jan__5_2010_To_Dec_31_2050"},
        {"fields after the CN stay part of it", {{"CN", "Root"}, {"emailAddress", "ca@acme.test"}},
         "491010000000Z", "500909000000Z", 0, "Root/emailAddress=ca@acme.test",
         "Root/emailAddress=ca@acme.test_Oct_10_2049_To_Sep__9_1950"},
        {"longest common name that fits", {{"CN", longName}}, "100105000000Z", "100105000000Z", 0, longName,
         longName + "_Jan__5_2010_To_Jan__5_2010"},
        {"common name one too long", {{"CN", longName + "n"}}, "100105000000Z", "100105000000Z", -1, "", ""},
        {"no CN", {{"O", "Acme"}}, "100105000000Z", "20501231235959Z", -1, "", ""},
        {"month outside the calendar", {{"CN", "Root"}}, "101305000000Z", "20501231235959Z", -1, "", ""},
    };
    // clang-format on
    for (const Case& c : cases) {
        const std::string path = writeCertificate(c.fields, c.notBefore, c.notAfter);
        std::string commonName = "", caName = "";
        EXPECT_EQ(CertMgr::readPemSubject(path, commonName, caName), c.result) << c.name;
        EXPECT_EQ(commonName, c.commonName) << c.name;
        EXPECT_EQ(caName, c.caName) << c.name;
        unlink(path.c_str());
    }
}

TEST(PemSubject, UnreadableFilesAreReported)
{
    std::string commonName = "kept", caName = "kept";
    const Captured missing =
        captureOutput([&] { EXPECT_EQ(CertMgr::readPemSubject("/nonexistent/ca.pem", commonName, caName), -1); });
    EXPECT_EQ(missing.err, "D [CVL] Failed to read Pem file '/nonexistent/ca.pem'?!\n");
    EXPECT_EQ(commonName + caName, "keptkept");
}

TEST(PemSubject, ValidityTextEdges)
{
    int year = -1, month = -1, day = -1;
    EXPECT_FALSE(CertMgr::parseCertTime("1001050000000Z", 12, year, month, day));
    EXPECT_FALSE(CertMgr::parseCertTime("100105000000000000000Z", 21, year, month, day));
    EXPECT_EQ(year + month + day, -3);
    EXPECT_TRUE(CertMgr::parseCertTime("2x0105000000Z", 13, year, month, day));  // a digit, then no more
    EXPECT_EQ(year, 2002);

    char text[128];
    EXPECT_EQ(CertMgr::formatValidity(2010, 1, 5, 2030, 12, 31, text, sizeof text), 26);
    char small[26] = "untouched";
    EXPECT_EQ(CertMgr::formatValidity(2010, 1, 5, 2030, 12, 31, small, 25), 0);
    EXPECT_STREQ(small, "untouched");
    EXPECT_EQ(CertMgr::formatValidity(2010, 0, 5, 2030, 12, 31, small, sizeof small), 0);
}

}  // namespace
