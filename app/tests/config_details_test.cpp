#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "app/ConfigDetails.h"

namespace {

std::vector<std::string> argv(std::initializer_list<std::string> rest)
{
    std::vector<std::string> args{"corvelcfg"};
    args.insert(args.end(), rest);
    return args;
}

ConfigDetails parsed(std::initializer_list<std::string> rest)
{
    ConfigDetails config;
    const auto args = argv(rest);
    parseArguments(config, static_cast<int>(args.size()), args);
    return config;
}

class TempFile {
public:
    explicit TempFile(const std::string& content)
    {
        char name[] = "/tmp/corvelcfg-test-XXXXXX";
        const int fd = mkstemp(name);
        path = name;
        FILE* f = fdopen(fd, "wb");
        fwrite(content.data(), 1, content.size(), f);
        fclose(f);
    }
    ~TempFile() { std::remove(path.c_str()); }
    std::string path;
};

ConfigDetails fromFile(const std::string& content)
{
    TempFile file(content);
    ConfigDetails config;
    EXPECT_EQ(readConfigFile(config, file.path, "/dev/usb/lp3"), 0);
    EXPECT_EQ(config.usbPath, "/dev/usb/lp3");
    return config;
}

TEST(ConfigDetails, DefaultsAreThoseTheUtilitySendsWithoutOptions)
{
    ConfigDetails config;
    EXPECT_EQ(config.usbPath, "/dev/usb/lp0");
    EXPECT_EQ(config.channel, "6");
    EXPECT_EQ(config.mode, "Managed");
    EXPECT_EQ(config.security, "None");
    EXPECT_TRUE(config.ssid.empty() && config.passwd.empty() && config.npaData.empty() && config.wepKey[3].empty());
}

struct OptionCase {
    const char* argument;
    const char* key;
    const char* before;
    const char* expected;
};

TEST(GetOptionValue, ExtractsByQuoteRuleOrKeyLength)
{
    const OptionCase cases[] = {
        {"--ssid=My Net", "--ssid=", "old", "My Net"},
        {"--ssid=\"My Net\"", "--ssid=", "old", "My Net"},
        {"--passwd=ab\"cd", "--passwd=", "old", "cd"},            // text after the first quote, to the end
        {"--ssid=", "--ssid=", "old", ""},                        // empty value replaces
        {"--channel=11", "--ssid=", "old", "old"},                // key absent: untouched
        {"--passwd=x--ssid=y", "--passwd=", "", "x--ssid=y"},
        {"--passwd=x--ssid=y", "--ssid=", "", "d=x--ssid=y"},     // key found inside, cut by key length
        {"  --ssid=abc", "--ssid=", "", "d=abc"},
        {"  --ssid=\"abc\"", "--ssid=", "", "abc"},
        {"--ssid=a\"b\"c\"d", "--ssid=", "", "b"},                // up to the next quote
        {"--WEP-key1=x", "--wep-key1=", "old", "old"},            // keys are case-sensitive
    };
    for (const OptionCase& c : cases) {
        std::string value = c.before;
        EXPECT_EQ(getOptionValue(c.argument, c.key, value), 0);
        EXPECT_EQ(value, c.expected) << c.argument << " with key " << c.key;
    }
}

TEST(ParseArguments, OptionsPathAndOverwrites)
{
    const ConfigDetails config = parsed({"-c", "--ssid=first", "/dev/usb/lp2", "--ssid=second", "--channel=",
                                         "--WEP-key3=k3", "--802-CA-cer-file=/tmp/ca.pem", "--cer-path=out.csr"});
    EXPECT_EQ(config.ssid, "second");
    EXPECT_EQ(config.channel, "");
    EXPECT_EQ(config.usbPath, "/dev/usb/lp2");
    EXPECT_EQ(config.wepKey[2], "k3");
    EXPECT_EQ(config.caCerFile, "/tmp/ca.pem");
    EXPECT_EQ(config.cerPath, "out.csr");

    // A path argument that contains '-' is taken for an option and sets nothing.
    EXPECT_EQ(parsed({"-c", "/dev/usb/lp-2"}).usbPath, "/dev/usb/lp0");
    EXPECT_EQ(parsed({"-c", "001:004"}).usbPath, "001:004");
    // The mode itself and a misspelled option change nothing.
    const ConfigDetails untouched = parsed({"-c", "--SSID=x", "--sid=y"});
    EXPECT_EQ(untouched.ssid, "");
    EXPECT_EQ(untouched.mode, "Managed");
}

TEST(ParseArguments, EveryKeyWritesItsOwnField)
{
    const ConfigDetails c = parsed({"--ssid=1", "--channel=2", "--mode=3", "--security=4", "--passwd=5",
                                    "--encryption=6", "--802-auth-ext=7", "--802-auth-inner=8", "--802-user=9",
                                    "--802-pwd=10", "--802-CA-cer-file=11", "--802-signed-cer-file=12",
                                    "--WEP-key1=13", "--WEP-key2=14", "--WEP-key3=15", "--WEP-key4=16",
                                    "--WEP-transmit=17", "--psk=18", "--cer-common=19", "--cer-org=20",
                                    "--cer-unit=21", "--cer-state=22", "--cer-country=23", "--cer-city=24",
                                    "--cer-altname=25", "--cer-friendly-name=26", "--cer-path=27"});
    const std::vector<std::string> got{c.ssid,       c.channel,         c.mode,      c.security,    c.passwd,
                                       c.encryption, c.authExt,         c.authInner, c.user8021x,   c.pwd8021x,
                                       c.caCerFile,  c.signedCerFile,   c.wepKey[0], c.wepKey[1],   c.wepKey[2],
                                       c.wepKey[3],  c.wepTransmit,     c.psk,       c.cerCommon,   c.cerOrg,
                                       c.cerUnit,    c.cerState,        c.cerCountry, c.cerCity,    c.cerAltname,
                                       c.cerFriendlyName, c.cerPath};
    for (std::size_t i = 0; i < got.size(); ++i)
        EXPECT_EQ(got[i], std::to_string(i + 1)) << "field " << i;
    EXPECT_EQ(c.usbPath, "/dev/usb/lp0");
}

TEST(ReadConfigFile, LinesCommentsQuotesAndLineEnds)
{
    const ConfigDetails config = fromFile("# --ssid=commented\n"
                                          "--mode=Ad-Hoc\r\n"
                                          "--ssid=\"Office Net\"\r\n"
                                          "--security=WPA # not a comment\n"
                                          "\n"
                                          "/dev/usb/lp9\n"
                                          "--psk=last-without-newline");
    EXPECT_EQ(config.ssid, "Office Net");
    EXPECT_EQ(config.mode, "Ad-Hoc\r");  // a carriage return stays in an unquoted value
    EXPECT_EQ(config.security, "WPA # not a comment");
    EXPECT_EQ(config.psk, "last-without-newline");
    EXPECT_EQ(config.usbPath, "/dev/usb/lp3");  // the file cannot set the path

    EXPECT_EQ(fromFile("--ssid=My Net\n").ssid, "My Net");
    EXPECT_EQ(fromFile("--ssid=a\n--ssid=b\n").ssid, "b");
    EXPECT_EQ(fromFile("  --ssid=abc\n").ssid, "d=abc");
}

TEST(ReadConfigFile, LongLinesArriveInPiecesOf255)
{
    // 300 characters: a piece of 255, then one of 45 that holds a key of its own.
    const std::string tail = "--psk=" + std::string(39, 'p');
    const std::string line = "--ssid=" + std::string(255 - 7, 's') + tail;
    ASSERT_EQ(line.size(), 300u);
    const ConfigDetails config = fromFile(line + "\n");
    EXPECT_EQ(config.ssid, std::string(248, 's'));
    EXPECT_EQ(config.psk, std::string(39, 'p'));
}

TEST(ReadConfigFile, UnreadableFileIsReportedThroughErrno)
{
    ConfigDetails config;
    config.ssid = "kept";
    errno = 0;
    EXPECT_EQ(readConfigFile(config, "/nonexistent/settings.txt", "/dev/usb/lp1"), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(readConfigFile(config, "/tmp", "/dev/usb/lp1"), -1);  // a directory opens but cannot be read
    EXPECT_EQ(config.ssid, "kept");
}

TEST(FindUsbPath, LastArgumentWithoutDashWins)
{
    struct Case {
        std::vector<std::string> args;
        const char* expected;
    } cases[] = {
        {argv({"-s", "/dev/usb/lp2"}), "/dev/usb/lp2"},
        {argv({"-s", "001:004", "/dev/usb/lp1"}), "/dev/usb/lp1"},
        {argv({"-s", "/dev/usb/lp-2"}), "/dev/usb/lp0"},
        {argv({"-npa", "-file", "packet.hex"}), "packet.hex"},
        {argv({"-npa", "-file", "read-ssid.hex"}), "/dev/usb/lp0"},
        {argv({"-s"}), "/dev/usb/lp0"},
    };
    for (const Case& c : cases) {
        std::string path = "/dev/usb/lp0";
        EXPECT_EQ(findUsbPath(path, static_cast<int>(c.args.size()), c.args), 0);
        EXPECT_EQ(path, c.expected);
    }
}

TEST(ReadNpaFile, KeepsHexDigitsOnlyAndReportsThem)
{
    struct Case {
        const char* content;
        const char* digits;
    } cases[] = {
        {"A5 00 06\n", "A50006"},
        {"0xA5", "0A5"},
        {"a5,00;0g6\r\nzz", "a50006"},
        {"", ""},
    };
    for (const Case& c : cases) {
        TempFile file(c.content);
        ConfigDetails config;
        config.npaData = "stale";
        testing::internal::CaptureStdout();
        EXPECT_EQ(readNpaFile(config, file.path), 0);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(config.npaData, c.digits);
        EXPECT_EQ(out, "npaFileData: (" + std::to_string(std::string(c.digits).size()) + " bytes) " + c.digits + "\n");
    }

    ConfigDetails config;
    config.npaData = "kept";
    testing::internal::CaptureStdout();
    EXPECT_EQ(readNpaFile(config, "/nonexistent.hex"), -1);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(config.npaData, "kept");
}

}  // namespace
