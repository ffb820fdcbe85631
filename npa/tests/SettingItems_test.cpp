// The setting operations: item bytes for edge values, the debug trace and the
// password prompt.
#include <gtest/gtest.h>

#include <functional>

#include "npa/tests/NpaTestSupport.h"

namespace {

using Operation = int32_t (WirelessConfigurator::*)();
using RecordSetup = std::function<void(ConfigDetails&)>;

// Runs one setting operation on a record prepared by `setup`.
struct ItemRun {
    std::string item;  // hex of the bytes appended
    int32_t returned;
    Captured output;
};

ItemRun runItem(const RecordSetup& setup, const std::function<int32_t(WirelessConfigurator&)>& operation)
{
    ConfigDetails details;
    setup(details);
    ConfiguratorUnderTest t(details);
    ItemRun run;
    run.output = captureOutput([&] { run.returned = operation(t.configurator); });
    run.item = hexOf(t.configurator.getPacket());
    return run;
}

std::string textHex(char c, size_t n)
{
    return hexOf(std::string(n, c));
}

TEST(SettingItems, BytesForEdgeValues)
{
    using W = WirelessConfigurator;
    const std::string number = "00 00 04 00 00 00 ";
    const std::string noExt = "00 2A 15 00 00 01 00 2A 16 00 00 01 00 2A 17 00 00 01 ";
    const struct {
        RecordSetup setup;
        std::function<int32_t(W&)> operation;
        std::string item;
    } cases[] = {
        {[](auto& c) { c.mode = "Ad-Hoc"; }, &W::addMode, "28 02 " + number + "01"},
        {[](auto& c) { c.mode = "Ad-hoc"; }, &W::addMode, "28 02 " + number + "00"},
        {[](auto& c) { c.mode.clear(); }, &W::addMode, ""},
        {[](auto& c) { c.channel = "11"; }, &W::addChannel, "28 05 " + number + "0B"},
        {[](auto& c) { c.channel = "12"; }, &W::addChannel, "28 05 " + number + "06"},
        {[](auto& c) { c.channel = "06"; }, &W::addChannel, "28 05 " + number + "06"},
        {[](auto& c) { c.channel.clear(); }, &W::addChannel, "28 05 " + number + "06"},
        {[](auto& c) { c.ssid = "Hello"; }, &W::addSSID, "28 08 00 00 06 " + hexOf("Hello") + " 00"},
        {[](auto&) {}, &W::addSSID, ""},
        {[](auto& c) { c.security = "WEP", c.passwd = "abc"; }, &W::addPassword, "28 09 00 00 04 61 62 63 00"},
        {[](auto& c) { c.security = "WPA", c.passwd = "abc"; }, &W::addPassword, "28 11 00 00 04 61 62 63 00"},
        {[](auto& c) { c.security = "WPA2"; }, &W::addPassword, "28 11 00 00 06 " + hexOf("typed") + " 00"},
        {[](auto& c) { c.passwd = "abc"; }, &W::addPassword, ""},
        {[](auto& c) { c.wepKey[0] = std::string(30, 'k'); }, [](W& w) { return w.addWEPKey(1); },
         "28 09 00 00 1A " + textHex('k', 26)},
        {[](auto&) {}, [](W& w) { return w.addWEPKey(1); }, "28 09 00 00 00"},
        {[](auto& c) { c.wepKey[3] = "12"; }, [](W& w) { return w.addWEPKey(4); }, "28 0F 00 00 02 31 32"},
        {[](auto&) {}, [](W& w) { return w.addWEPKey(5); }, ""},
        {[](auto&) {}, &W::addPSK, "28 11 00 00 00"},
        {[](auto& c) { c.psk = std::string(70, 's'); }, &W::addPSK, "28 11 00 00 40 " + textHex('s', 64)},
        {[](auto& c) { c.wepTransmit = "2"; }, &W::addWEPTransmitKey, "28 1F " + number + "02"},
        {[](auto&) {}, &W::addWEPTransmitKey, "28 1F " + number + "01"},
        {[](auto& c) { c.wepTransmit = "x3"; }, &W::addWEPTransmitKey, "28 1F " + number + "00"},
        {[](auto& c) { c.wepTransmit = " 258x"; }, &W::addWEPTransmitKey, "28 1F " + number + "02"},
        {[](auto& c) { c.wepTransmit = "-1"; }, &W::addWEPTransmitKey, "28 1F " + number + "FF"},
        {[](auto& c) { c.wepTransmit = std::string(20, '9'); }, &W::addWEPTransmitKey, "28 1F " + number + "FF"},
        {[](auto& c) { c.security = "WPA-ENT"; }, &W::addSecurity, "28 22 " + number + "04"},
        {[](auto& c) { c.security = "OPEN", c.encryption = "WEP"; }, &W::addSecurity, "28 22 " + number + "01"},
        {[](auto& c) { c.security = "OPEN"; }, &W::addSecurity, "28 22 " + number + "00"},
        {[](auto& c) { c.security = "WPA/WPA2"; }, &W::addSecurity, "28 22 " + number + "02"},
        {[](auto& c) { c.security = "802.1x"; }, &W::addSecurity, "28 22 " + number + "03"},
        {[](auto& c) { c.security.clear(); }, &W::addSecurity, "28 22 " + number + "00"},
        {[](auto& c) { c.encryption = "WEP", c.security = "OPEN"; }, &W::addWEPAuthMode, "28 23 " + number + "01"},
        {[](auto& c) { c.encryption = "WEP", c.security = "SHARED"; }, &W::addWEPAuthMode, "28 23 " + number + "02"},
        {[](auto& c) { c.encryption = "NONE", c.security = "SHARED"; }, &W::addWEPAuthMode, "28 23 " + number + "00"},
        {[](auto& c) { c.security = "SHARED"; }, &W::addWEPAuthMode, ""},
        {[](auto& c) { c.encryption = "WEP-DYNAMIC"; }, &W::addEncryption, "28 26 " + number + "01"},
        {[](auto& c) { c.encryption = "TKIP"; }, &W::addEncryption, "28 26 " + number + "03"},
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
        {[](auto& c) { c.authExt = "LE|AP||xEAP-MD5x|"; }, &W::addAuthExtensions,
         "2A 14 00 00 01 01 2A 15 00 00 01 00 2A 16 00 00 01 00 2A 17 00 00 01 00 2A 18 00 00 01 00 2A 19 00 00 01 00"},
        {[](auto& c) { c.authInner = "MSCHAPv2"; }, &W::addInnerAuth, "2A 1A " + number + "02"},
        {[](auto& c) { c.authInner = "PAP"; }, &W::addInnerAuth, "2A 1A " + number + "03"},
        {[](auto& c) { c.authInner = "EAP"; }, &W::addInnerAuth, "2A 1A " + number + "00"},
        {[](auto&) {}, &W::addInnerAuth, ""},
    };
    int row = 0;
    for (const auto& c : cases) {
        const ItemRun run = runItem(c.setup, c.operation);
        EXPECT_EQ(run.item, c.item) << "row " << row;
        EXPECT_EQ(run.returned, static_cast<int32_t>(bytesFromHex(run.item).size())) << "row " << row;
        ++row;
    }
}

TEST(SettingItems, DebugLinesAndSecurityOutput)
{
    const struct {
        RecordSetup setup;
        Operation operation;
        const char* err;
        const char* out;
    } cases[] = {
        {[](auto& c) { c.mode.clear(); }, &WirelessConfigurator::addMode, "D [CVL] Mode = ''\n", ""},
        {[](auto& c) { c.security = "WPA"; }, &WirelessConfigurator::addSecurity,
         "D [CVL] Security = 'WPA'\nD [CVL] Security mode: 2 (WPA PSK (Auto 1 or 2))\n", "npa data going: 2"},
        {[](auto& c) { c.security.clear(); }, &WirelessConfigurator::addSecurity,
         "D [CVL] Security = ''\nD [CVL] Security mode: 0 (No Security)\n", "npa data going: 0"},
        {[](auto& c) { c.psk = "secret"; }, &WirelessConfigurator::addPSK,
         "D [CVL] PSK (Pre-shared key) = secret (6 bytes)\n", ""},
        {[](auto&) {}, &WirelessConfigurator::addWEPTransmitKey, "D [CVL] WEP Transmit key = \n", ""},
        {[](auto& c) { c.encryption = "AES"; }, &WirelessConfigurator::addWEPAuthMode,
         "D [CVL] WEP auth mode: 0 (Auto)\n", ""},
        {[](auto&) {}, &WirelessConfigurator::addWEPAuthMode, "", ""},
        {[](auto& c) { c.user8021x = "bob"; }, &WirelessConfigurator::add8021xUser,
         "D [CVL] 802.1x User = bob (3 bytes)\n", ""},
        {[](auto&) {}, &WirelessConfigurator::add8021xPassword, "D [CVL] 802.1x password =  (0 bytes)\n", ""},
        {[](auto& c) { c.authExt = "LEAP"; }, &WirelessConfigurator::addAuthExtensions,
         "D [CVL] 802.1x Auth Extension = LEAP\n", ""},
    };
    for (const auto& c : cases) {
        const ItemRun run = runItem(c.setup, [&](WirelessConfigurator& w) { return (w.*c.operation)(); });
        EXPECT_EQ(run.output.err, c.err);
        EXPECT_EQ(run.output.out, c.out);
    }
    const ItemRun key4 = runItem([](auto& c) { c.wepKey[3] = "ab"; },
                                 [](WirelessConfigurator& w) { return w.addWEPKey(4); });
    EXPECT_EQ(key4.output.err, "D [CVL] WEP Key 4 = 'ab' (2 bytes)\n");
}

TEST(SettingItems, PasswordIsAskedForEveryBuildAndOnlyWhenNeeded)
{
    const struct {
        const char* security;
        const char* passwd;
        int prompts;
    } cases[] = {{"WPA", "", 2}, {"WEP", "", 2}, {"None", "", 0}, {"WPA", "given", 0}};
    for (const auto& c : cases) {
        ConfigDetails details;
        details.security = c.security;
        details.passwd = c.passwd;
        ConfiguratorUnderTest t(details);
        captureOutput([&] { t.configurator.addPassword(), t.configurator.addPassword(); });
        EXPECT_EQ(t.passwordPrompts, c.prompts) << c.security << "/" << c.passwd;
        EXPECT_EQ(t.config.passwd, c.passwd) << "the record is not changed";
    }
}

}  // namespace
