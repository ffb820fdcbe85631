// Reading the secret (file modes, bounds, line ends, the prompt) and checking
// it for each kind of security. The refusals that
// tests/e2e/ctl_refusals_e2e_test.cpp runs are not repeated here.
#include "ctl/Failure.h"
#include "ctl/Secrets.h"
#include "ctl/tests/TempFolder.h"

#include <gtest/gtest.h>

#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

using namespace corvelctl;

namespace {

// The exit status and message of the failure `call` throws, or "read: SECRET".
template <typename Call>
std::string outcome(Call call)
{
    try {
        return "read: " + std::string(call().reveal());
    } catch (const Failure& failure) {
        return "exit " + std::to_string(exitCode(failure.status())) + ": " + failure.message();
    }
}

TEST(Secrets, ReadsAPrivateFileWithoutItsFinalLineEnd)
{
    const TempFolder folder;
    const struct {
        std::string content, read;
    } cases[] = {
        {"secret phrase\n", "secret phrase"},
        {"crlf\r\n", "crlf"},
        {"two\n\n", "two\n"},
        {"no end", "no end"},
        {"lone cr\r", "lone cr\r"},
        {"", ""},
        {"k1\nk2\n", "k1\nk2"},
        {std::string(4095, 'a') + "\n", std::string(4095, 'a')},
        {std::string(4096, 'b'), std::string(4096, 'b')},
    };
    for (const auto& c : cases) {
        const std::string path = folder.file("pw", c.content, 0600);
        EXPECT_EQ(outcome([&] { return readSecretFile(path, false); }), "read: " + c.read) << c.content;
    }
}

TEST(Secrets, RefusesFilesItShouldNotReadWithTheirStatus)
{
    const TempFolder folder;
    const std::string writable = folder.file("writable", "secret\n", 0602);
    const std::string tooLong = folder.file("long", std::string(4097, 'c'), 0600);
    const std::string unreadable = folder.file("unreadable", "secret\n", 0200);
    const struct {
        std::string path;
        std::string expected;
    } cases[] = {
        {writable, "exit 64: passphrase file " + writable + " is open to group or others (mode 0602)"},
        {folder.path, "exit 64: passphrase file " + folder.path + " is not a regular file"},
        {tooLong, "exit 65: passphrase file " + tooLong + " holds more than 4096 bytes"},
        // Root reads it anyway.
        {unreadable, geteuid() == 0 ? "read: secret"
                                    : "exit 66: cannot open passphrase file " + unreadable + ": Permission denied"},
    };
    for (const auto& c : cases) {
        const std::string result = outcome([&] { return readSecretFile(c.path, false); });
        EXPECT_EQ(result.substr(0, c.expected.size()), c.expected) << result;
    }
}

TEST(Secrets, ReadsStandardInputToItsEndWithinTheBound)
{
    for (const std::string& input : {std::string("from a pipe\r\n"), std::string(4096, 'd')}) {
        int fds[2];
        ASSERT_EQ(pipe(fds), 0);
        // The pipe holds 64 KiB: the write does not block.
        ASSERT_EQ(write(fds[1], input.data(), input.size()), static_cast<ssize_t>(input.size()));
        close(fds[1]);
        EXPECT_EQ(outcome([&] { return readSecretStream(fds[0]); }), "read: " + input.substr(0, input.find('\r')));
        close(fds[0]);
    }
}

TEST(Secrets, ChecksTheSecretForItsSecurity)
{
    const struct {
        std::string secret;
        Security security;
        int wepTransmitKey;
        std::string expected;  // "ok", or the start of the message
    } cases[] = {
        {"12345678", Security::Wpa2Psk, 1, "ok"},
        {std::string(63, '~'), Security::WpaWpa2Psk, 1, "ok"},
        {"0123456789abcdefABCDEF" + std::string(42, '0'), Security::Wpa2Psk, 1, "ok"},
        {"caf\xC3\xA9 latte", Security::Wpa2Psk, 1, "the passphrase holds a character that is not printable ASCII"},
        {"tab\there", Security::Wpa2Psk, 1, "the passphrase holds a character that is not printable ASCII"},
        {std::string("nul\0inside", 10), Security::Wpa2Psk, 1, "the secret holds a NUL byte"},
        {"abcde", Security::WepOpen, 1, "ok"},
        {"abcdefghijklm\n0123456789\r\n0123456789abcdef0123456789\nvwxyz", Security::WepShared, 4, "ok"},
        {"", Security::WepOpen, 1, "WEP key 1 has 0 characters; a key is 5 or 13 printable ASCII characters or 10"},
        {"abcde\n\nabcde", Security::WepOpen, 1, "WEP key 2 has 0 characters; "},
        {"abcd\x01", Security::WepOpen, 1, "WEP key 1 has 5 characters; "},
        {"abcde", Security::WepOpen, 2, "--wep-tx-key 2 names no key: the secret holds 1 key"},
        {"x", Security::Ieee8021x, 1, "ok"},
        {std::string(255, '\xff'), Security::Ieee8021x, 1, "ok"},
    };
    for (const auto& c : cases) {
        try {
            validateSecret(Secret(c.secret), c.security, c.wepTransmitKey);
            EXPECT_EQ("ok", c.expected) << c.secret;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.status(), ExitStatus::DataError) << failure.message();
            EXPECT_EQ(failure.message().substr(0, c.expected.size()), c.expected) << c.secret;
        }
    }
    const std::vector<Secret> keys = wepKeys(Secret("abcde\r\n0123456789"));
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys[0].reveal(), "abcde");
    EXPECT_EQ(keys[1].reveal(), "0123456789");
}

TEST(Secrets, ASecretMovesAndLeavesNothingBehind)
{
    Secret first("hunter22");
    Secret second(std::move(first));
    EXPECT_TRUE(first.empty());
    EXPECT_EQ(second.reveal(), "hunter22");
    first = std::move(second);
    EXPECT_EQ(first.reveal(), "hunter22");
    EXPECT_EQ(second.size(), 0u);
    EXPECT_TRUE(obtainSecret(WifiOptions{}).empty()) << "--security none needs none";
}

// The prompt on a terminal: a child whose controlling terminal is a pty types
// the secret there; it exits 0 when the secret read is the one typed, without
// its line end. The child arms an alarm so a broken prompt cannot hang.
TEST(Secrets, PromptsOnTheTerminalWithoutEcho)
{
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    ASSERT_GE(child, 0);
    if (child == 0) {
        alarm(10);
        WifiOptions options;
        options.security = Security::Wpa2Psk;
        options.secretSource = SecretSource::Prompt;
        try {
            _exit(obtainSecret(options).reveal() == "typed secret" ? 0 : 1);
        } catch (...) {
            _exit(2);
        }
    }
    // What the terminal shows, read until `done` or `waitMs` without output.
    std::string shown;
    const auto readShown = [&](int waitMs, auto done) {
        for (pollfd ready{terminal, POLLIN, 0}; !done() && poll(&ready, 1, waitMs) == 1;) {
            char buffer[256];
            const ssize_t count = read(terminal, buffer, sizeof buffer);
            if (count <= 0) break;
            shown.append(buffer, static_cast<std::size_t>(count));
        }
    };
    // Echo is off once the prompt shows: the secret is typed then.
    readShown(10000, [&] { return shown.find("Please provide the password:") != std::string::npos; });
    ASSERT_NE(shown.find("Please provide the password:"), std::string::npos) << "no prompt; shown: " << shown;
    const std::string typed = "typed secret\n";
    ASSERT_EQ(write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    readShown(100, [] { return false; });
    close(terminal);
    ASSERT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(shown.find("typed"), std::string::npos) << "echoed: " << shown;
}

}  // namespace
