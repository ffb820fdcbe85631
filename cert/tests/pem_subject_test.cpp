// The CA name derived from a PEM certificate, on certificates made here with
// OpenSSL, and the date pieces it is built from.
#include <string>

#include <gtest/gtest.h>

#include "cert/CertMgr.h"
#include "tests/support/CaptureOutput.h"
#include "tests/support/SelfSignedCert.h"
#include "tests/support/TempFile.h"

namespace {

struct Case {
    const char* name;
    SubjectFields fields;
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
        const TempFile pem(selfSignedPem(c.fields, c.notBefore, c.notAfter));
        std::string commonName = "", caName = "";
        EXPECT_EQ(CertMgr::readPemSubject(pem.path, commonName, caName), c.result) << c.name;
        EXPECT_EQ(commonName, c.commonName) << c.name;
        EXPECT_EQ(caName, c.caName) << c.name;
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
