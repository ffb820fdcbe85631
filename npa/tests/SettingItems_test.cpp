// The setting operations: the item bytes each appends for edge values of the
// record, and when the password is asked for.
#include <gtest/gtest.h>

#include <functional>

#include "npa/tests/NpaTestSupport.h"

namespace {

std::string textHex(char c, size_t n) { return hexOf(std::string(n, c)); }

TEST(SettingItems, BytesForEdgeValues)
{
    using W = WirelessConfigurator;
    const std::string number = "00 00 04 00 00 00 ";
    const std::string noExt = "00 2A 15 00 00 01 00 2A 16 00 00 01 00 2A 17 00 00 01 ";
    const struct {
        std::function<void(ConfigDetails&)> setup;
        std::function<int32_t(W&)> operation;
        std::string item;
    } cases[] = {
        {[](auto& c) { c.mode = "Ad-hoc"; }, &W::addMode, "28 02 " + number + "00"},
        {[](auto& c) { c.mode.clear(); }, &W::addMode, ""},
        {[](auto& c) { c.channel = "12"; }, &W::addChannel, "28 05 " + number + "06"},
        {[](auto& c) { c.channel.clear(); }, &W::addChannel, "28 05 " + number + "06"},
        {[](auto&) {}, &W::addSSID, ""},
        {[](auto& c) { c.security = "WPA2"; }, &W::addPassword, "28 11 00 00 06 " + hexOf("typed") + " 00"},
        {[](auto& c) { c.passwd = "abc"; }, &W::addPassword, ""},
        {[](auto& c) { c.wepKey[0] = std::string(30, 'k'); }, [](W& w) { return w.addWEPKey(1); },
         "28 09 00 00 1A " + textHex('k', 26)},
        {[](auto&) {}, [](W& w) { return w.addWEPKey(1); }, "28 09 00 00 00"},
        {[](auto& c) { c.wepKey[3] = "12"; }, [](W& w) { return w.addWEPKey(4); }, "28 0F 00 00 02 31 32"},
        {[](auto&) {}, [](W& w) { return w.addWEPKey(5); }, ""},
        {[](auto&) {}, &W::addPSK, "28 11 00 00 00"},
        {[](auto& c) { c.psk = std::string(70, 's'); }, &W::addPSK, "28 11 00 00 40 " + textHex('s', 64)},
        {[](auto&) {}, &W::addWEPTransmitKey, "28 1F " + number + "01"},
        {[](auto& c) { c.wepTransmit = "x3"; }, &W::addWEPTransmitKey, "28 1F " + number + "00"},
        {[](auto& c) { c.wepTransmit = " 258x"; }, &W::addWEPTransmitKey, "28 1F " + number + "02"},
        {[](auto& c) { c.wepTransmit = "-1"; }, &W::addWEPTransmitKey, "28 1F " + number + "FF"},
        {[](auto& c) { c.wepTransmit = std::string(20, '9'); }, &W::addWEPTransmitKey, "28 1F " + number + "FF"},
        {[](auto& c) { c.security = "WPA/WPA2"; }, &W::addSecurity, "28 22 " + number + "02"},
        {[](auto& c) { c.security = "802.1x"; }, &W::addSecurity, "28 22 " + number + "03"},
        {[](auto& c) { c.security.clear(); }, &W::addSecurity, "28 22 " + number + "00"},
        {[](auto& c) { c.encryption = "WEP", c.security = "SHARED"; }, &W::addWEPAuthMode, "28 23 " + number + "02"},
        {[](auto& c) { c.encryption = "NONE", c.security = "SHARED"; }, &W::addWEPAuthMode, "28 23 " + number + "00"},
        {[](auto& c) { c.security = "SHARED"; }, &W::addWEPAuthMode, ""},
        {[](auto& c) { c.encryption = "WEP-DYNAMIC"; }, &W::addEncryption, "28 26 " + number + "01"},
        {[](auto& c) { c.encryption = "WPA-AES"; }, &W::addEncryption, "28 26 " + number + "04"},
        {[](auto& c) { c.encryption = "ROT13"; }, &W::addEncryption, "28 26 " + number + "00"},
        {[](auto&) {}, &W::addEncryption, ""},
        {[](auto& c) { c.user8021x = std::string(40, 'u'); }, &W::add8021xUser,
         "2A 02 00 00 20 " + textHex('u', 31) + " 00"},
        {[](auto&) {}, &W::add8021xUser, ""},
        {[](auto& c) { c.pwd8021x = std::string(300, 'p'); }, &W::add8021xPassword,
         "2A 03 00 01 00 " + textHex('p', 255) + " 00"},
        {[](auto& c) { c.authExt = "PEAP|EAP-TLS"; }, &W::addAuthExtensions,
         "2A 14 00 00 01 00 2A 15 00 00 01 00 2A 16 00 00 01 00 2A 17 00 00 01 01 2A 18 00 00 01 01 2A 19 00 00 01 00"},
        {[](auto& c) { c.authExt = "EAP-TTLS"; }, &W::addAuthExtensions,
         "2A 14 00 00 01 " + noExt + "00 2A 18 00 00 01 00 2A 19 00 00 01 01"},
        // Only whole names between bars count.
        {[](auto& c) { c.authExt = "LE|AP||xEAP-MD5x|"; }, &W::addAuthExtensions,
         "2A 14 00 00 01 01 2A 15 00 00 01 00 2A 16 00 00 01 00 2A 17 00 00 01 00 2A 18 00 00 01 00 2A 19 00 00 01 00"},
        {[](auto& c) { c.authInner = "MSCHAPv2"; }, &W::addInnerAuth, "2A 1A " + number + "02"},
        {[](auto& c) { c.authInner = "PAP"; }, &W::addInnerAuth, "2A 1A " + number + "03"},
        {[](auto& c) { c.authInner = "EAP"; }, &W::addInnerAuth, "2A 1A " + number + "00"},
        {[](auto&) {}, &W::addInnerAuth, ""},
    };
    for (size_t row = 0; row < sizeof cases / sizeof cases[0]; ++row) {
        ConfigDetails details;
        cases[row].setup(details);
        ConfiguratorUnderTest t(details);
        int32_t appended = 0;
        captureOutput([&] { appended = cases[row].operation(t.configurator); });
        EXPECT_EQ(hexOf(t.configurator.getPacket()), cases[row].item) << "row " << row;
        EXPECT_EQ(appended, static_cast<int32_t>(t.configurator.getPacket().size())) << "row " << row;
    }
}

TEST(SettingItems, PasswordIsAskedForEveryBuildAndNeverStored)
{
    ConfigDetails details;
    details.security = "WPA";
    ConfiguratorUnderTest t(details);
    captureOutput([&] { t.configurator.addPassword(), t.configurator.addPassword(); });
    EXPECT_EQ(t.passwordPrompts, 2);
    EXPECT_EQ(t.config.passwd, "");
}

}  // namespace
