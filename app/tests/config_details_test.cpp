// Filling the configuration record from options, a settings file and a
// packet file.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/ConfigDetails.h"
#include "tests/support/TempFile.h"

namespace {

std::vector<std::string> withProgramName(std::vector<std::string> args)
{
    args.insert(args.begin(), "corvelcfg");
    return args;
}

ConfigDetails parsed(const std::vector<std::string>& rest)
{
    ConfigDetails config;
    const auto args = withProgramName(rest);
    parseArguments(config, static_cast<int>(args.size()), args);
    return config;
}

ConfigDetails fromFile(const std::string& content)
{
    const TempFile file(content);
    ConfigDetails config;
    EXPECT_EQ(readConfigFile(config, file.path, "/dev/usb/lp3"), 0);
    return config;
}

TEST(GetOptionValue, QuoteRuleOrKeyLength)
{
    const struct {
        const char* argument;
        const char* key;
        const char* expected;
    } cases[] = {
        {"--ssid=My Net", "--ssid=", "My Net"},
        {"--ssid=\"My Net\"", "--ssid=", "My Net"},
        {"--passwd=ab\"cd", "--passwd=", "cd"},  // after the first quote, to the end
        {"--channel=11", "--ssid=", "old"},      // key absent: untouched
        {"--passwd=x--ssid=y", "--ssid=", "d=x--ssid=y"},  // found inside, cut by the key's length
    };
    for (const auto& c : cases) {
        std::string value = "old";
        EXPECT_EQ(getOptionValue(c.argument, c.key, value), 0);
        EXPECT_EQ(value, c.expected) << c.argument << " with key " << c.key;
    }
}

TEST(ParseArguments, LaterOptionsWinAndEveryKeyWritesItsOwnField)
{
    const ConfigDetails repeated = parsed({"-c", "--ssid=first", "--ssid=second", "--channel=", "--SSID=x"});
    EXPECT_EQ(repeated.ssid, "second");
    EXPECT_EQ(repeated.channel, "");

    const ConfigDetails c = parsed({"--ssid=1", "--channel=2", "--mode=3", "--security=4", "--passwd=5",
                                    "--encryption=6", "--802-auth-ext=7", "--802-auth-inner=8", "--802-user=9",
                                    "--802-pwd=10", "--802-CA-cer-file=11", "--802-signed-cer-file=12",
                                    "--WEP-key1=13", "--WEP-key2=14", "--WEP-key3=15", "--WEP-key4=16",
                                    "--WEP-transmit=17", "--psk=18", "--cer-common=19", "--cer-org=20",
                                    "--cer-unit=21", "--cer-state=22", "--cer-country=23", "--cer-city=24",
                                    "--cer-altname=25", "--cer-friendly-name=26", "--cer-path=27"});
    const std::vector<std::string> got{c.ssid,       c.channel,       c.mode,       c.security,  c.passwd,
                                       c.encryption, c.authExt,       c.authInner,  c.user8021x, c.pwd8021x,
                                       c.caCerFile,  c.signedCerFile, c.wepKey[0],  c.wepKey[1], c.wepKey[2],
                                       c.wepKey[3],  c.wepTransmit,   c.psk,        c.cerCommon, c.cerOrg,
                                       c.cerUnit,    c.cerState,      c.cerCountry, c.cerCity,   c.cerAltname,
                                       c.cerFriendlyName, c.cerPath};
    for (std::size_t i = 0; i < got.size(); ++i)
        EXPECT_EQ(got[i], std::to_string(i + 1)) << "field " << i;
}

// The option form and the path-only form agree: the last argument without '-' is the path.
TEST(UsbPathArgument, LastArgumentWithoutDashWins)
{
    const struct {
        std::vector<std::string> args;
        const char* expected;
    } cases[] = {
        {{"-s", "001:004", "/dev/usb/lp1"}, "/dev/usb/lp1"},
        {{"-s", "/dev/usb/lp-2"}, "/dev/usb/lp0"},  // taken for an option
        {{"-npa", "-file", "packet.hex"}, "packet.hex"},
        {{"-npa", "-file", "read-ssid.hex"}, "/dev/usb/lp0"},
    };
    for (const auto& c : cases) {
        const auto args = withProgramName(c.args);
        std::string path = "/dev/usb/lp0";
        EXPECT_EQ(findUsbPath(path, static_cast<int>(args.size()), args), 0);
        EXPECT_EQ(path, c.expected) << c.args.back();
        EXPECT_EQ(parsed(c.args).usbPath, c.expected) << c.args.back();
    }
}

TEST(ReadConfigFile, CommentsLineEndsQuotesAndLongLines)
{
    // 300 characters arrive as a piece of 255 and one of 45, each tried as a line.
    const std::string longLine = "--cer-org=" + std::string(245, 'o') + "--psk=" + std::string(39, 'p');
    ASSERT_EQ(longLine.size(), 300u);
    const ConfigDetails config = fromFile("# --ssid=commented\n"
                                          "--mode=Ad-Hoc\r\n"
                                          "--ssid=\"Office Net\"\r\n"
                                          "--security=WPA # not a comment\n"
                                          "\n"
                                          "/dev/usb/lp9\n" +
                                          longLine +
                                          "\n--passwd=first\n"
                                          "--passwd=last-without-newline");
    EXPECT_EQ(config.ssid, "Office Net");
    EXPECT_EQ(config.mode, "Ad-Hoc\r");  // a carriage return stays in an unquoted value
    EXPECT_EQ(config.security, "WPA # not a comment");
    EXPECT_EQ(config.cerOrg, std::string(245, 'o'));
    EXPECT_EQ(config.psk, std::string(39, 'p'));
    EXPECT_EQ(config.passwd, "last-without-newline");
    EXPECT_EQ(config.usbPath, "/dev/usb/lp3");  // the file cannot set the path

    EXPECT_EQ(fromFile("  --ssid=abc\n").ssid, "d=abc");
    EXPECT_EQ(fromFile("  --ssid=\"abc\"\n").ssid, "abc");
}

}  // namespace
