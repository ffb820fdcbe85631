// The queries: the request each sends, plain and wrapped, and what each makes
// of the printer's answer.
#include <gtest/gtest.h>

#include "npa/tests/NpaTestSupport.h"
#include "tests/support/FakeClock.h"

namespace {

// A wrapped answer to a read of 2A/field: envelope, then the inner answer
// packet with the declared value length and the value bytes given.
std::string wrappedReadAnswer(const char* field, const char* declaredLength, const std::string& value)
{
    return std::string("A5 00 00 50 E0 63 02 00 00 A5 00 00 50 E0 D8 00 2A ") + field + " " + declaredLength + " " +
           value;
}

TEST(Queries, RequestsPlainAndWrapped)
{
    const struct {
        int (WirelessConfigurator::*query)();
        const char* plain;
        const char* wrapped;
    } cases[] = {
        {&WirelessConfigurator::waitForConnection, "A5 00 06 50 E0 D8 00 28 15", "A5 00 0F 50 E0 63 02 00 09"},
        {&WirelessConfigurator::pollDeviceStatus, "A5 00 06 50 E0 D8 00 06 1F", "A5 00 0F 50 E0 63 02 00 09"},
        {&WirelessConfigurator::showSSID, "A5 00 06 50 E0 D8 00 28 08", "A5 00 0F 50 E0 63 02 00 09"},
        {&WirelessConfigurator::getIPAddress, "A5 00 06 50 E0 D8 00 0A 02", "A5 00 0F 50 E0 63 02 00 09"},
        {&WirelessConfigurator::queryAuthStatus, "A5 00 06 50 E0 D8 00 2A 1D", "A5 00 0F 50 E0 63 02 00 09"},
        {&WirelessConfigurator::resetPrinter, "A5 00 0A 50 E0 DA 01 06 14 00 00 01 01", "A5 00 13 50 E0 63 02 00 0D"},
    };
    for (const auto& c : cases) {
        for (bool wrapped : {true, false}) {
            ScopedFakeClock clock;
            ConfiguratorUnderTest t;
            t.configurator.setPassThrough(wrapped);
            captureOutput([&] { (t.configurator.*c.query)(); });
            const std::string expected = wrapped ? std::string(c.wrapped) + " " + c.plain : c.plain;
            ASSERT_FALSE(t.transport.writes.empty()) << c.plain;
            for (const auto& written : t.transport.writes) {
                EXPECT_EQ(hexOf(written), expected);
            }
        }
    }
}

TEST(Queries, ShowSSIDPrintsTheTextAfterTheWrappedRequest)
{
    ScopedFakeClock clock;
    ConfiguratorUnderTest t;
    t.transport.addAnswer("A5 00 0F 50 E0 63 02 00 09 A5 00 06 50 E0 D8 00 28 08 00 07 " + hexOf("Office") + " 00");
    const Captured captured = captureOutput([&] { EXPECT_EQ(t.configurator.showSSID(), 0); });
    EXPECT_EQ(captured.out, "Office\n");
}

TEST(Queries, AuthStatus)
{
    const struct {
        std::string answer;
        int result;
        const char* statusLine;  // nullptr: none
    } cases[] = {
        {wrappedReadAnswer("1D", "00 01", "02"), 2, "D [CVL] Status: 2 (Authenticated)\n"},
        {wrappedReadAnswer("1D", "00 01", "0B"), 11, "D [CVL] Status: 11 (CA Certificate Not Installed)\n"},
        {wrappedReadAnswer("1D", "00 01", "0E"), 14, "D [CVL] Status: 14 (Unknown status)\n"},
        {wrappedReadAnswer("1C", "00 01", "02"), -1, nullptr},  // another field's answer
        {wrappedReadAnswer("1D", "00 00", ""), -1, nullptr},    // no value
        {wrappedReadAnswer("1D", "00 01", ""), -1, nullptr},    // value announced, missing
        {wrappedReadAnswer("1D", "", ""), -1, nullptr},         // header cut at the end
        {"A5 00 05 50 E0 63 02 01", -1, nullptr},
        {"", -1, nullptr},
    };
    for (const auto& c : cases) {
        ScopedFakeClock clock;
        ConfiguratorUnderTest t;
        std::vector<uint8_t> answer = bytesFromHex(c.answer);
        if (!answer.empty()) {
            answer[2] = static_cast<uint8_t>(answer.size() - 3);  // the envelope's frame length
        }
        t.transport.addAnswer(answer);
        const Captured captured =
            captureOutput([&] { EXPECT_EQ(t.configurator.queryAuthStatus(), c.result) << c.answer; });
        const std::string count = "(" + std::to_string(answer.empty() ? 0 : answer.size() - 4) + " bytes)\n";
        const std::string opening = "D [CVL] 802.1x Authentication status...\nD [CVL] Auth status response " + count;
        EXPECT_EQ(captured.err.rfind(opening, 0), 0u) << captured.err;
        EXPECT_EQ(captured.err.find("Status:") != std::string::npos, c.statusLine != nullptr) << c.answer;
        if (c.statusLine != nullptr) {
            EXPECT_NE(captured.err.find(c.statusLine), std::string::npos) << captured.err;
        }
        EXPECT_EQ(clock.clock.sleeps, std::vector<unsigned>{2});
    }
}

TEST(Queries, CertSettings)
{
    const struct {
        std::string answer;
        const char* organizationLine;  // nullptr: none
    } cases[] = {
        {wrappedReadAnswer("06", "00 04", hexOf("Acme")), "D [CVL] Organization (4 bytes): Acme\n"},
        {wrappedReadAnswer("06", "00 05", hexOf("Acme") + " 00"), "D [CVL] Organization (5 bytes): Acme\n"},
        {wrappedReadAnswer("06", "01 2C", hexOf("Acme")), "D [CVL] Organization (4 bytes): Acme\n"},  // cut at the end
        {wrappedReadAnswer("06", "00 00", ""), "D [CVL] Organization (0 bytes): \n"},
        {"", nullptr},
    };
    for (const auto& c : cases) {
        ScopedFakeClock clock;
        ConfiguratorUnderTest t;
        std::vector<uint8_t> answer = bytesFromHex(c.answer);
        if (!answer.empty()) {
            answer[2] = static_cast<uint8_t>(answer.size() - 3);
        }
        t.transport.addAnswer(answer);
        const Captured captured = captureOutput([&] { EXPECT_EQ(t.configurator.queryCertSettings(), 0); });
        const char* const opening = "D [CVL] Certifcate settings...\nD [CVL] Cert Organization...\nD [CVL] Cert org (";
        EXPECT_EQ(captured.err.rfind(opening, 0), 0u) << captured.err;
        EXPECT_EQ(captured.err.find("Organization (") != std::string::npos, c.organizationLine != nullptr);
        if (c.organizationLine != nullptr) {
            EXPECT_NE(captured.err.find(c.organizationLine), std::string::npos) << captured.err;
        }
        EXPECT_NE(captured.err.find("D [CVL] Cert common name...\nD [CVL] Common name resp (0 bytes)\n"),
                  std::string::npos);
        ASSERT_EQ(t.transport.writes.size(), 2u);
        EXPECT_EQ(hexOf(t.transport.writes[1]), "A5 00 0F 50 E0 63 02 00 09 A5 00 06 50 E0 D8 00 2A 0A");
    }
}

}  // namespace
