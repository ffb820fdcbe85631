// The setting operations: the item bytes each sequence sends for edge values
// of the record, when the password is asked for, and a request too long for
// its length field. (Whole requests and each sequence's items in order are
// checked byte for byte by the run-driver and end-to-end tests.)
#include <gtest/gtest.h>

#include <functional>
#include <tuple>

#include "npa/tests/NpaTestSupport.h"

namespace {

std::string textHex(char c, size_t n) { return hexOf(std::string(n, c)); }

// The items of every settings request written whose hex starts with `key`
// ("28 02"; "2A 1" for the fields 2A/10 to 2A/1F), in order.
std::string itemsWithKey(const std::vector<std::string>& writes, const std::string& key)
{
    std::string found;
    for (const std::string& request : writes) {
        for (const std::string& item : settingsItems(request)) {
            if (item.compare(0, key.size(), key) == 0) {
                found += (found.empty() ? "" : " ") + item;
            }
        }
    }
    return found;
}

TEST(SettingItems, BytesForEdgeValues)
{
    using W = WirelessConfigurator;
    const auto basic = &W::basicConfig;
    const auto advanced = &W::advancedConfig;  // the sequence of the security set
    const std::string number = "00 00 04 00 00 00 ";
    const struct {
        std::function<void(ConfigDetails&)> setup;
        int (W::*sequence)();
        const char* key;
        std::string item;
    } cases[] = {
        {[](auto& c) { c.mode = "Ad-hoc"; }, basic, "28 02", "28 02 " + number + "00"},
        {[](auto& c) { c.mode.clear(); }, basic, "28 02", ""},
        {[](auto& c) { c.channel = "12"; }, basic, "28 05", "28 05 " + number + "06"},
        {[](auto& c) { c.passwd = "abc"; }, basic, "28 11", ""},
        {[](auto& c) { c.security = "SHARED", c.wepKey[0] = std::string(30, 'k'); }, advanced, "28 09",
         "28 09 00 00 1A " + textHex('k', 26)},
        {[](auto& c) { c.security = "SHARED", c.wepKey[3] = "12"; }, advanced, "28 0F", "28 0F 00 00 02 31 32"},
        {[](auto& c) { c.security = "WPA-PER", c.psk = std::string(70, 's'); }, advanced, "28 11",
         "28 11 00 00 40 " + textHex('s', 64)},
        {[](auto& c) { c.security = "SHARED", c.wepTransmit = " 258x"; }, advanced, "28 1F", "28 1F " + number + "02"},
        {[](auto& c) { c.security = "WPA/WPA2"; }, basic, "28 22", "28 22 " + number + "02"},
        {[](auto& c) { c.security = "802.1x"; }, basic, "28 22", "28 22 " + number + "03"},
        {[](auto& c) { c.security = "SHARED"; }, advanced, "28 23", ""},
        {[](auto& c) { c.security = "SHARED", c.encryption = "WEP"; }, advanced, "28 23", "28 23 " + number + "02"},
        {[](auto& c) { c.security = "OPEN", c.encryption = "WEP"; }, advanced, "28 23", "28 23 " + number + "01"},
        {[](auto& c) { c.security = "WPA-PER", c.encryption = "WEP-DYNAMIC"; }, advanced, "28 26",
         "28 26 " + number + "01"},
        {[](auto& c) { c.security = "WPA-ENT", c.encryption = "WPA-AES"; }, advanced, "28 26",
         "28 26 " + number + "04"},
        {[](auto& c) { c.security = "WPA-PER", c.encryption = "ROT13"; }, advanced, "28 26", "28 26 " + number + "00"},
        {[](auto& c) { c.security = "802.1x", c.user8021x = std::string(40, 'u'); }, advanced, "2A 02",
         "2A 02 00 00 20 " + textHex('u', 31) + " 00"},
        {[](auto& c) { c.security = "802.1x", c.pwd8021x = std::string(300, 'p'); }, advanced, "2A 03",
         "2A 03 00 01 00 " + textHex('p', 255) + " 00"},
        {[](auto& c) { c.security = "802.1x", c.authExt = "PEAP|EAP-TLS"; }, advanced, "2A 1",
         "2A 14 00 00 01 00 2A 15 00 00 01 00 2A 16 00 00 01 00 2A 17 00 00 01 01 2A 18 00 00 01 01 2A 19 00 00 01 00"},
        // Only whole names between bars count.
        {[](auto& c) { c.security = "802.1x", c.authExt = "LE|AP||xEAP-MD5x|"; }, advanced, "2A 1",
         "2A 14 00 00 01 01 2A 15 00 00 01 00 2A 16 00 00 01 00 2A 17 00 00 01 00 2A 18 00 00 01 00 2A 19 00 00 01 00"},
        {[](auto& c) { c.security = "802.1x", c.authInner = "MSCHAPv2"; }, advanced, "2A 1A", "2A 1A " + number + "02"},
        {[](auto& c) { c.security = "802.1x"; }, advanced, "2A 1A", ""},
    };
    for (size_t row = 0; row < sizeof cases / sizeof cases[0]; ++row) {
        ConfigDetails details;
        cases[row].setup(details);
        ConfiguratorUnderTest t(details);
        t.configurator.setPassThrough(false);
        captureOutput([&] { (t.configurator.*cases[row].sequence)(); });
        EXPECT_EQ(itemsWithKey(t.printer.writes, cases[row].key), cases[row].item) << "row " << row;
    }
}

TEST(SettingItems, PasswordIsAskedForEveryBuildAndNeverStored)
{
    ConfigDetails details;
    details.security = "WPA";
    ConfiguratorUnderTest t(details);
    captureOutput([&] { t.configurator.basicConfig(), t.configurator.basicConfig(); });
    EXPECT_EQ(t.passwordPrompts, 2);
    EXPECT_EQ(t.config.passwd, "");
}

// The request is its SSID's length and 40 bytes: the 16-bit length field
// describes at most 65538 of them.
TEST(SettingItems, ARequestTooLongForItsLengthFieldIsNotSent)
{
    // Past 65534 characters the SSID value is cut to what its own length field holds.
    for (const auto& [ssidLength, sentSize, refusal] :
         {std::tuple{65498, 65538, ""}, {65499, 0, "65539"}, {70000, 0, "65574"}}) {
        ConfigDetails details;
        details.ssid = std::string(ssidLength, 's');
        ConfiguratorUnderTest t(details);
        t.configurator.setPassThrough(false);
        const Captured captured = captureOutput([&] { t.configurator.basicConfig(); });
        EXPECT_EQ(t.printer.writes.empty() ? 0 : t.printer.writes[0].size(), size_t(sentSize)) << ssidLength;
        const std::string tooLong = std::string("D [CVL] Settings request too long (") + refusal + " bytes)!\n";
        EXPECT_EQ(captured.err.find(tooLong) != std::string::npos, *refusal != '\0') << ssidLength;
    }
}

}  // namespace
