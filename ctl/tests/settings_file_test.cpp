// A provisioning settings file: how its lines are read, and that its settings
// meet the wifi command's rules (those rules' own cases are in
// command_line_test.cpp and secrets_test.cpp).
#include "ctl/Failure.h"
#include "ctl/SettingsFile.h"
#include "ctl/tests/TempFolder.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

using namespace corvelctl;

namespace {

// The settings of `text` in one line, or "exit N: MESSAGE".
std::string outcome(const std::string& text)
{
    try {
        const ProvisionSettings settings = checkSettings(parseSettingsLines(text, "p.conf"), "p.conf");
        const WifiOptions& w = settings.wifi;
        std::ostringstream s;
        s << "ssid=" << w.ssid << " " << securityName(w.security) << " ch" << w.channel
          << (w.mode == WirelessMode::AdHoc ? " ad-hoc" : "") << " "
          << (w.encryption ? encryptionName(*w.encryption) : "-") << " tx" << w.wepTransmitKey;
        for (const EapMethod method : w.eap) s << " eap=" << eapMethodName(method);
        if (w.inner) s << " inner=" << innerAuthenticationName(*w.inner);
        if (!w.user.empty()) s << " user=" << w.user;
        if (w.wait) s << " wait=" << w.wait->count();
        s << " secret=[" << settings.secret.reveal() << "]";
        return s.str();
    } catch (const Failure& failure) {
        return "exit " + std::to_string(exitCode(failure.status())) + ": " + failure.message();
    }
}

TEST(SettingsFile, ReadsKeyValueLines)
{
    const struct {
        std::string text, settings;
    } cases[] = {
        {"ssid = Office Net\nsecurity = wpa2-psk\npassphrase = correct horse\n",
         "ssid=Office Net wpa2-psk ch6 aes tx1 secret=[correct horse]"},
        // Comments, blank lines, tabs, CRLF, no final line end; '#' and '='
        // inside a value are the value's.
        {"# office\n\n  \t\r\n\tssid\t=\tA#1 = b \r\n  # ssid = other\nsecurity=wpa-wpa2-psk\r\nencryption = tkip\n"
         "channel = 011\nmode=managed\nwait = 90\npassphrase =  p#ss=word ",
         "ssid=A#1 = b wpa-wpa2-psk ch11 tkip tx1 wait=90 secret=[p#ss=word]"},
        {"ssid=Cafe\nsecurity=none", "ssid=Cafe none ch6 - tx1 secret=[]"},
        {"ssid=Old\nsecurity=wep-shared\nmode=ad-hoc\nchannel=1\npassphrase=0123456789",
         "ssid=Old wep-shared ch1 ad-hoc - tx1 secret=[0123456789]"},
        {"ssid=Corp\nsecurity=802.1x\neap=peap,tls\ninner=mschapv2\nuser=alice\nencryption=wep-dynamic\n"
         "passphrase=pw",
         "ssid=Corp 802.1x ch6 wep-dynamic tx1 eap=peap eap=tls inner=mschapv2 user=alice secret=[pw]"},
    };
    for (const auto& c : cases) EXPECT_EQ(outcome(c.text), c.settings) << c.text;
}

TEST(SettingsFile, RefusesWhatItCannotReadNamingFileAndLine)
{
    const std::string wpa = "ssid = Home\nsecurity = wpa2-psk\n";
    const struct {
        std::string text, result;
    } cases[] = {
        {"ssid Home\n", "exit 65: settings file p.conf line 1: no '='; a setting is written key = value"},
        {"# x\n\nssid = Home\nSSID = Other\n",
         "exit 65: settings file p.conf line 4: unknown key \"SSID\"; the keys are ssid, security, channel, mode, "
         "encryption, wep-tx-key, eap, inner, user, wait, passphrase"},
        {"= x\n", "exit 65: settings file p.conf line 1: unknown key \"\""},
        {"passphrase-file = /etc/pw\n", "exit 65: settings file p.conf line 1: unknown key \"passphrase-file\""},
        {wpa + "passphrase = a\nssid = Again\n",
         "exit 65: settings file p.conf line 4: ssid given twice (first on line 1)"},
        {wpa + "passphrase = abcdefgh\r\npassphrase = abcdefgh\n",
         "exit 65: settings file p.conf line 4: passphrase given twice (first on line 3)"},
        {std::string("ssid = a\0b\n", 11), "exit 65: settings file p.conf holds a NUL byte"},
    };
    for (const auto& c : cases) {
        const std::string result = outcome(c.text);
        EXPECT_EQ(result.substr(0, c.result.size()), c.result) << c.text;
    }
}

// The wifi rules and the secret's checks, as bad data of the file.
TEST(SettingsFile, AppliesTheWifiRules)
{
    const struct {
        std::string text, result;
    } cases[] = {
        {"security = none\n", "exit 65: settings file p.conf: wifi needs --ssid SSID"},
        {"ssid = " + std::string(33, 's') + "\nsecurity = none\n",
         "exit 65: settings file p.conf: --ssid must have 1-32 bytes"},
        {"ssid = Home\nsecurity = wpa-psk\n", "exit 65: settings file p.conf: --security wpa-psk: the printer has no"},
        {"ssid = Home\nsecurity = none\nchannel = 12\n",
         "exit 65: settings file p.conf: --channel \"12\" is not a whole number from 1 to 11"},
        {"ssid = Home\nsecurity = none\nencryption = aes\n",
         "exit 65: settings file p.conf: --encryption does not apply to --security none"},
        {"ssid = Home\nsecurity = none\nwait = \n", "exit 65: settings file p.conf: --wait= needs a number"},
        {"ssid = Home\nsecurity = wpa2-psk\nuser = bob\npassphrase = abcdefgh\n",
         "exit 65: settings file p.conf: --user applies to --security 802.1x only"},
        {"ssid = Home\nsecurity = none\n\npassphrase = abcdefgh\n",
         "exit 65: settings file p.conf line 4: security none takes no passphrase; leave it out"},
        {"ssid = Home\nsecurity = wpa2-psk\n",
         "exit 65: settings file p.conf: security wpa2-psk needs a passphrase line"},
        {"ssid = Home\nsecurity = wpa2-psk\npassphrase = short\n",
         "exit 65: settings file p.conf: the passphrase has 5 characters; WPA needs 8-63"},
        {"ssid = Home\nsecurity = wep-open\nwep-tx-key = 2\npassphrase = abcde\n",
         "exit 65: settings file p.conf: --wep-tx-key 2 names no key: the secret holds 1 key"},
        {"ssid = Home\nsecurity = 802.1x\neap = tls\nuser = u\npassphrase =\n",
         "exit 65: settings file p.conf: the 802.1x password has 0 bytes"},
    };
    for (const auto& c : cases) {
        const std::string result = outcome(c.text);
        EXPECT_EQ(result.substr(0, c.result.size()), c.result) << c.text << "\n  got: " << result;
    }
}

// The file is checked as a passphrase file is, with no way to share it.
TEST(SettingsFile, IsReadOnlyFromAPrivateRegularFile)
{
    const TempFolder folder;
    const std::string text = "ssid = Home\nsecurity = wpa2-psk\npassphrase = abcdefgh\n";
    const std::string good = folder.file("good.conf", text, 0600);
    const std::string shared = folder.file("shared.conf", text, 0640);
    const std::string huge = folder.file("huge.conf", "# " + std::string(4100, 'x') + "\n" + text, 0600);
    symlink(good.c_str(), (folder.path + "/link.conf").c_str());
    const struct {
        std::string path, result;
    } cases[] = {
        {good, "wpa2-psk abcdefgh"},
        {shared, "exit 64: settings file " + shared + " is open to group or others (mode 0640); chmod go= it"},
        {folder.path + "/link.conf", "exit 64: settings file " + folder.path + "/link.conf is a symbolic link"},
        {folder.path, "exit 64: settings file " + folder.path + " is not a regular file"},
        {folder.path + "/none.conf", "exit 66: cannot open settings file " + folder.path + "/none.conf"},
        {huge, "exit 65: settings file " + huge + " holds more than 4096 bytes"},
    };
    for (const auto& c : cases) {
        std::string result;
        try {
            const ProvisionSettings settings = readProvisionSettings(c.path);
            result = std::string(securityName(settings.wifi.security)) + " " + std::string(settings.secret.reveal());
        } catch (const Failure& failure) {
            result = "exit " + std::to_string(exitCode(failure.status())) + ": " + failure.message();
        }
        EXPECT_EQ(result.substr(0, c.result.size()), c.result) << c.path << "\n  got: " << result;
    }
}

}  // namespace
