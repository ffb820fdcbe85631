// The configuration sequences: the request each one sends, the order of its
// items, and the default run's progress on standard output.
#include <gtest/gtest.h>

#include "npa/ByteOrder.h"
#include "npa/tests/NpaTestSupport.h"
#include "tests/support/FakeClock.h"

namespace {

const char* const kAccepted = "A5 00 04 50 E0 DA 01";

// "group/field" of every item of a plain settings request, in order.
std::string itemKeys(const std::vector<uint8_t>& request)
{
    std::string keys;
    size_t at = 7;  // after A5, length, flags and E0 DA 01
    while (at + 5 <= request.size()) {
        char key[8];
        std::snprintf(key, sizeof key, "%02X/%02X", request[at], request[at + 1]);
        keys += (keys.empty() ? "" : " ") + std::string(key);
        at += 5 + fromBigEndian(&request[at + 3], 2);
    }
    EXPECT_EQ(at, request.size()) << "the items must fill the request exactly";
    return keys;
}

TEST(Sequences, BasicConfigRequestOfTheWorkedExample)
{
    ScopedFakeClock clock;
    ConfigDetails details;
    details.ssid = "net";
    ConfiguratorUnderTest t(details);
    t.configurator.setPassThrough(false);
    t.transport.addAnswer(kAccepted);
    const Captured captured = captureOutput([&] { EXPECT_EQ(t.configurator.basicConfig(), 0); });
    ASSERT_EQ(t.transport.writes.size(), 1u);
    EXPECT_EQ(hexOf(t.transport.writes[0]),
              "A5 00 28 50 E0 DA 01 28 02 00 00 04 00 00 00 00 28 22 00 00 04 00 00 00 00 "
              "28 05 00 00 04 00 00 00 06 28 08 00 00 04 6E 65 74 00");
    EXPECT_EQ(captured.err.rfind("D [CVL] Basic config...\n", 0), 0u);
    EXPECT_NE(captured.err.find("D [CVL] Basic config ret = 0\n"), std::string::npos);
    EXPECT_EQ(captured.err.find("A5 00 28"), std::string::npos) << "basicConfig does not dump its request";
}

TEST(Sequences, ItemOrderOfEverySequence)
{
    const std::string wep = "28/09 28/0B 28/0D 28/0F 28/1F 28/23 ";
    const std::string basicTail = "28/02 28/22 28/05 28/08";
    const std::string wpa = "28/11 28/26 " + basicTail;
    const struct {
        const char* security;
        const char* encryption;
        int (WirelessConfigurator::*sequence)();
        std::string keys;
        const char* debugLine;
    } cases[] = {
        {"WPA", "WEP", &WirelessConfigurator::basicConfig, basicTail + " 28/11", "D [CVL] Basic config...\n"},
        {"WPA-ENT", "WEP", &WirelessConfigurator::configureWPAEnterprise, wpa, "Configuring WPA Enterprise...\n"},
        {"WPA-PER", "WEP", &WirelessConfigurator::configureWPAPersonal, wpa, "Configuring WPA Personal...\n"},
        {"OPEN", "WEP", &WirelessConfigurator::configureOpen, wep + basicTail, "Configuring Open Mode...\n"},
        {"OPEN", "", &WirelessConfigurator::configureOpen, basicTail, "Configuring Open Mode...\n"},
        {"SHARED", "WEP", &WirelessConfigurator::configureShared, wep + basicTail, "Configuring Shared Mode...\n"},
        {"OPEN", "WEP", &WirelessConfigurator::advancedConfig, wep + basicTail, "D [CVL] Adv OPEN ret = 0\n"},
        {"SHARED", "WEP", &WirelessConfigurator::advancedConfig, wep + basicTail, "D [CVL] Adv SHARED ret = 0\n"},
        {"SHARED", "", &WirelessConfigurator::configureShared, "28/09 28/0B 28/0D 28/0F 28/1F " + basicTail,
         "Configuring Shared Mode...\n"},
        {"WPA-PER", "AES", &WirelessConfigurator::advancedConfig, wpa, "D [CVL] Adv WPA-Personal ret = 0\n"},
        {"WPA-ENT", "AES", &WirelessConfigurator::advancedConfig, wpa, "D [CVL] Adv WPA-Ent ret = 0\n"},
    };
    for (const auto& c : cases) {
        ScopedFakeClock clock;
        ConfigDetails details;
        details.ssid = "net";
        details.passwd = "pw";
        details.security = c.security;
        details.encryption = c.encryption;
        ConfiguratorUnderTest t(details);
        t.configurator.setPassThrough(false);
        t.transport.addAnswer(kAccepted);
        const Captured captured = captureOutput([&] { EXPECT_EQ((t.configurator.*c.sequence)(), 0) << c.keys; });
        ASSERT_EQ(t.transport.writes.size(), 1u) << c.keys;
        EXPECT_EQ(itemKeys(t.transport.writes[0]), c.keys) << c.security << " " << c.debugLine;
        EXPECT_NE(captured.err.find(c.debugLine), std::string::npos) << captured.err;
        const bool dumped = captured.err.find("A5 00 ") != std::string::npos;
        EXPECT_EQ(dumped, c.sequence != &WirelessConfigurator::basicConfig) << "only basicConfig sends undumped";
    }
}

TEST(Sequences, AdvancedConfigWithoutASequence)
{
    const struct {
        const char* security;
        int result;
        const char* err;
    } cases[] = {
        {"WPA", 0, "D [CVL] Advanced config...\nD [CVL] Master security = 'WPA'\n"},
        {"802.1x", -1,
         "D [CVL] Advanced config...\nD [CVL] Master security = '802.1x'\n"
         "D [CVL] 802.1x configuration is not available yet.\nD [CVL] Adv 8021x ret = -1\n"},
    };
    for (const auto& c : cases) {
        ConfigDetails details;
        details.security = c.security;
        ConfiguratorUnderTest t(details);
        const Captured captured = captureOutput([&] { EXPECT_EQ(t.configurator.advancedConfig(), c.result); });
        EXPECT_EQ(captured.err, c.err);
        EXPECT_TRUE(t.transport.writes.empty());
    }
}

TEST(Sequences, ARequestTooLongForItsLengthFieldIsNotSent)
{
    ConfigDetails details;
    details.ssid = std::string(70000, 's');  // the SSID value alone fills the 16-bit length
    ConfiguratorUnderTest t(details);
    t.configurator.setPassThrough(false);
    const Captured captured = captureOutput([&] { EXPECT_EQ(t.configurator.basicConfig(), -1); });
    EXPECT_TRUE(t.transport.writes.empty());
    EXPECT_NE(captured.err.find("D [CVL] Settings request too long (65574 bytes)!\n"), std::string::npos);
}

TEST(Sequences, ConfigurePrinterWithASilentPrinter)
{
    ScopedFakeClock clock;
    ConfigDetails details;
    details.ssid = "net";
    details.security = "WPA";  // no password given: every build prompts
    ConfiguratorUnderTest t(details);
    int length = 0;
    const Captured captured = captureOutput([&] { length = t.configurator.configurePrinter(); });

    EXPECT_EQ(captured.out,
              "npa data going: 2Configuring the printer....\nResetting the printer....\n"
              "Connecting to wireless network....npa data going: 2npa data going: 2"
              "Acquiring network address....\nIP-ADDRESS : ");
    // Shown: envelope 9 + frame 7 + mode, security, channel, SSID 9 each + password "typed" 11.
    EXPECT_EQ(length, 63);
    EXPECT_NE(captured.err.find("a5 0 3c 50 e0 63 2 0 36 a5 0 33 50 e0 da 1 28 2 0 0 4 0 0 0 0 28 22 "),
              std::string::npos);
    EXPECT_EQ(t.passwordPrompts, 3);

    // Wrapped settings, then plain settings, 4 connection and 7 address polls, all plain.
    ASSERT_EQ(t.transport.writes.size(), 13u);
    EXPECT_EQ(t.transport.writes[0][5], 0x63);
    for (size_t i = 1; i < t.transport.writes.size(); ++i) {
        EXPECT_NE(t.transport.writes[i][5], 0x63) << "request " << i << " must be plain";
    }
}

TEST(Sequences, ConfigurePrinterShowsTheAddress)
{
    ScopedFakeClock clock;
    ConfiguratorUnderTest t;
    t.transport.addAnswer(kAccepted);                            // settings
    t.transport.addAnswer("A5 00 08 50 E0 63 02 00 00 00");      // connected
    t.transport.addAnswer("A5 00 08 50 E0 63 02 0A 00 00 05");   // address
    const Captured captured = captureOutput([&] { t.configurator.configurePrinter(); });
    EXPECT_EQ(captured.out,
              "npa data going: 0Configuring the printer....\nResetting the printer....\n"
              "Connecting to wireless network....npa data going: 0Acquiring network address....\n"
              "IP-ADDRESS : 10.0.0.5\n");
    EXPECT_EQ(t.transport.writes.size(), 3u);
    EXPECT_TRUE(t.configurator.getPassThrough());
}

}  // namespace
