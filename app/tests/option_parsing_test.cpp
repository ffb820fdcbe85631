// Filling the configuration record from options, a settings file and a
// packet file.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/OptionParsing.h"
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

// A later option wins; a key is matched exactly (case counts), also inside
// another option, whose value then starts the key's length into the argument;
// a value with a quote is what follows the first quote.
TEST(ParseArguments, LaterOptionsWinAndValuesFollowTheQuoteRule)
{
    const ConfigDetails c = parsed({"-c", "--ssid=first", "--ssid=second", "--channel=", "--SSID=x", "--cer-path=p",
                                    "--psk=x--cer-org=y", "--passwd=ab\"cd"});
    EXPECT_EQ(c.ssid, "second");
    EXPECT_EQ(c.channel, "");
    EXPECT_EQ(c.cerPath, "p");
    EXPECT_EQ(c.cerOrg, "er-org=y");
    EXPECT_EQ(c.passwd, "cd");
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
