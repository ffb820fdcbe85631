// The configuration sequences: the worked example request, the order of every
// sequence's items, and a request too long for its length field.
#include <gtest/gtest.h>

#include "npa/tests/NpaTestSupport.h"

namespace {

TEST(Sequences, BasicConfigRequestOfTheWorkedExample)
{
    ConfigDetails details;
    details.ssid = "net";
    ConfiguratorUnderTest t(details);
    t.configurator.setPassThrough(false);
    t.transport.addAnswer("A5 00 04 50 E0 DA 01");
    captureOutput([&] { EXPECT_EQ(t.configurator.basicConfig(), 0); });
    ASSERT_EQ(t.transport.writes.size(), 1u);
    EXPECT_EQ(hexOf(t.transport.writes[0]),
              "A5 00 28 50 E0 DA 01 28 02 00 00 04 00 00 00 00 28 22 00 00 04 00 00 00 00 "
              "28 05 00 00 04 00 00 00 06 28 08 00 00 04 6E 65 74 00");
}

TEST(Sequences, ItemOrderOfEverySequence)
{
    using W = WirelessConfigurator;
    const std::string wep = "28/09 28/0B 28/0D 28/0F 28/1F 28/23 ";
    const std::string basic = "28/02 28/22 28/05 28/08";
    const std::string wpa = "28/11 28/26 " + basic;
    const struct {
        const char* security;
        const char* encryption;
        int (W::*sequence)();
        std::string keys;
    } cases[] = {
        {"WPA", "WEP", &W::basicConfig, basic + " 28/11"},
        {"WPA-ENT", "WEP", &W::advancedConfig, wpa},
        {"OPEN", "", &W::advancedConfig, basic},
        {"SHARED", "WEP", &W::advancedConfig, wep + basic},
        {"SHARED", "", &W::advancedConfig, "28/09 28/0B 28/0D 28/0F 28/1F " + basic},
    };
    for (const auto& c : cases) {
        ConfigDetails details;
        details.ssid = "net";
        details.passwd = "pw";
        details.security = c.security;
        details.encryption = c.encryption;
        ConfiguratorUnderTest t(details);
        t.configurator.setPassThrough(false);
        t.transport.addAnswer("A5 00 04 50 E0 DA 01");
        captureOutput([&] { EXPECT_EQ((t.configurator.*c.sequence)(), 0) << c.keys; });
        ASSERT_EQ(t.transport.writes.size(), 1u) << c.keys;
        EXPECT_EQ(itemKeys(t.transport.writes[0]), c.keys) << c.security << "/" << c.encryption;
    }
}

TEST(Sequences, ARequestTooLongForItsLengthFieldIsNotSent)
{
    ConfigDetails details;
    details.ssid = std::string(70000, 's');  // the SSID value alone overflows the 16-bit length
    ConfiguratorUnderTest t(details);
    t.configurator.setPassThrough(false);
    const Captured captured = captureOutput([&] { EXPECT_EQ(t.configurator.basicConfig(), -1); });
    EXPECT_TRUE(t.transport.writes.empty());
    EXPECT_NE(captured.err.find("D [CVL] Settings request too long (65574 bytes)!\n"), std::string::npos);
}

}  // namespace
