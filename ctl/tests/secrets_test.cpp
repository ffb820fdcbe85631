// Reading the secret (file modes, links, bounds, line ends) and checking it
// for each kind of security.
#include "ctl/Failure.h"
#include "ctl/Secrets.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

using namespace corvelctl;

namespace {

// A folder under /tmp for the test's files, removed with them.
struct TempFolder {
    TempFolder()
    {
        char name[] = "/tmp/corvelctlXXXXXX";
        path = mkdtemp(name);
    }
    ~TempFolder() { std::system(("rm -rf '" + path + "'").c_str()); }
    std::string file(const std::string& name, const std::string& content, mode_t mode) const
    {
        const std::string filePath = path + "/" + name;
        std::ofstream(filePath, std::ios::binary) << content;
        chmod(filePath.c_str(), mode);
        return filePath;
    }
    std::string path;
};

// The exit status and message of the failure `call` throws, or "read: SECRET".
template <typename Call>
std::string outcome(Call call)
{
    try {
        const Secret secret = call();
        return "read: " + std::string(secret.reveal());
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
    const std::string shared = folder.file("shared", "secret\n", 0640);
    const std::string writable = folder.file("writable", "secret\n", 0602);
    const std::string tooLong = folder.file("long", std::string(4097, 'c'), 0600);
    const std::string unreadable = folder.file("unreadable", "secret\n", 0200);
    const std::string link = folder.path + "/link";
    ASSERT_EQ(symlink((folder.path + "/long").c_str(), link.c_str()), 0);
    const struct {
        std::string path;
        std::string expected;
    } cases[] = {
        {shared, "exit 64: passphrase file " + shared +
                     " is open to group or others (mode 0640); chmod go= it, or give --allow-shared-file"},
        {writable, "exit 64: passphrase file " + writable + " is open to group or others (mode 0602)"},
        {link, "exit 64: passphrase file " + link + " is a symbolic link; name the file itself"},
        {folder.path, "exit 64: passphrase file " + folder.path + " is not a regular file"},
        {folder.path + "/missing",
         "exit 66: cannot open passphrase file " + folder.path + "/missing: No such file or directory"},
        {tooLong, "exit 65: passphrase file " + tooLong + " holds more than 4096 bytes"},
    };
    for (const auto& c : cases) {
        const std::string result = outcome([&] { return readSecretFile(c.path, false); });
        EXPECT_EQ(result.substr(0, c.expected.size()), c.expected) << result;
    }
    EXPECT_EQ(outcome([&] { return readSecretFile(shared, true); }), "read: secret");
    if (geteuid() != 0) {  // root reads it anyway
        EXPECT_EQ(outcome([&] { return readSecretFile(unreadable, false); }),
                  "exit 66: cannot open passphrase file " + unreadable + ": Permission denied");
    }
}

TEST(Secrets, ReadsStandardInputToItsEndWithinTheBound)
{
    const struct {
        std::string input, expected;
    } cases[] = {
        {"from a pipe\r\n", "read: from a pipe"},
        {std::string(4096, 'd'), "read: " + std::string(4096, 'd')},
        {std::string(5000, 'e'), "exit 65: standard input holds more than 4096 bytes; no secret is that long"},
    };
    for (const auto& c : cases) {
        int fds[2];
        ASSERT_EQ(pipe(fds), 0);
        // The pipe holds 64 KiB: the writes do not block.
        ASSERT_EQ(write(fds[1], c.input.data(), c.input.size()), static_cast<ssize_t>(c.input.size()));
        close(fds[1]);
        EXPECT_EQ(outcome([&] { return readSecretStream(fds[0]); }), c.expected);
        close(fds[0]);
    }
}

// "ok", or the message of the failure (whose status must be 65).
std::string checked(const std::string& secret, Security security, int wepTransmitKey = 1)
{
    try {
        validateSecret(Secret(secret), security, wepTransmitKey);
        return "ok";
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.status(), ExitStatus::DataError) << failure.message();
        return failure.message();
    }
}

TEST(Secrets, ChecksAWpaPassphrase)
{
    const std::string hex64(64, 'a');
    EXPECT_EQ(checked("12345678", Security::Wpa2Psk), "ok");
    EXPECT_EQ(checked(std::string(63, '~'), Security::WpaWpa2Psk), "ok");
    EXPECT_EQ(checked("0123456789abcdefABCDEF" + std::string(42, '0'), Security::Wpa2Psk), "ok");
    EXPECT_EQ(checked("1234567", Security::Wpa2Psk),
              "the passphrase has 7 characters; WPA needs 8-63 printable ASCII characters or 64 hex digits");
    EXPECT_EQ(checked(std::string(65, 'a'), Security::Wpa2Psk).substr(0, 31), "the passphrase has 65 character");
    EXPECT_EQ(checked(std::string(63, 'a') + "g", Security::Wpa2Psk).substr(0, 60),
              "the passphrase has 64 characters, so it must be 64 hex digit");
    EXPECT_EQ(checked("caf\xC3\xA9 latte", Security::Wpa2Psk).substr(0, 60),
              "the passphrase holds a character that is not printable ASCII");
    EXPECT_EQ(checked("tab\there", Security::Wpa2Psk).substr(0, 40), "the passphrase holds a character that is");
    EXPECT_EQ(checked(std::string("nul\0inside", 10), Security::Wpa2Psk), "the secret holds a NUL byte");
}

TEST(Secrets, ChecksWepKeysAndTheKeyToSendWith)
{
    EXPECT_EQ(checked("abcde", Security::WepOpen), "ok");
    EXPECT_EQ(checked("abcdefghijklm\n0123456789\r\n0123456789abcdef0123456789\nvwxyz", Security::WepShared, 4), "ok");
    EXPECT_EQ(checked("", Security::WepOpen),
              "WEP key 1 has 0 characters; a key is 5 or 13 printable ASCII characters or 10 or 26 hex digits");
    EXPECT_EQ(checked("abcde\nabcdef", Security::WepOpen).substr(0, 28), "WEP key 2 has 6 characters; ");
    EXPECT_EQ(checked("abcde\n\nabcde", Security::WepOpen).substr(0, 28), "WEP key 2 has 0 characters; ");
    EXPECT_EQ(checked("abcdefghij", Security::WepOpen),
              "WEP key 1 has 10 characters, so it must be hex digits, and it is not");
    EXPECT_EQ(checked("abcd\x01", Security::WepOpen).substr(0, 28), "WEP key 1 has 5 characters; ");
    EXPECT_EQ(checked("abcde\nabcde\nabcde\nabcde\nabcde", Security::WepOpen),
              "the secret has 5 lines; WEP takes 1-4 keys, one a line");
    EXPECT_EQ(checked("abcde\nabcde", Security::WepOpen, 3), "--wep-tx-key 3 names no key: the secret holds 2 keys");
    EXPECT_EQ(checked("abcde", Security::WepOpen, 2), "--wep-tx-key 2 names no key: the secret holds 1 key");

    const std::vector<Secret> keys = wepKeys(Secret("abcde\r\n0123456789"));
    ASSERT_EQ(keys.size(), 2u);
    EXPECT_EQ(keys[0].reveal(), "abcde");
    EXPECT_EQ(keys[1].reveal(), "0123456789");
}

TEST(Secrets, ChecksAn8021xPassword)
{
    EXPECT_EQ(checked("x", Security::Ieee8021x), "ok");
    EXPECT_EQ(checked(std::string(255, '\xff'), Security::Ieee8021x), "ok");
    EXPECT_EQ(checked("", Security::Ieee8021x), "the 802.1x password has 0 bytes; it must have 1-255");
    EXPECT_EQ(checked(std::string(256, 'p'), Security::Ieee8021x),
              "the 802.1x password has 256 bytes; it must have 1-255");
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
}

TEST(Secrets, NoSecretForOpenNetworksAndNoPromptWithoutATerminal)
{
    WifiOptions open;
    open.security = Security::None;
    EXPECT_TRUE(obtainSecret(open).empty());

    // Standard input replaced by a pipe: not a terminal to ask on.
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    const int savedInput = dup(STDIN_FILENO);
    dup2(fds[0], STDIN_FILENO);
    WifiOptions prompted;
    prompted.security = Security::Wpa2Psk;
    prompted.secretSource = SecretSource::Prompt;
    const std::string result = outcome([&] { return obtainSecret(prompted); });
    dup2(savedInput, STDIN_FILENO);
    close(savedInput);
    close(fds[0]);
    close(fds[1]);
    EXPECT_EQ(result, "exit 64: where is the secret? give --passphrase-file FILE or --passphrase-stdin (standard "
                      "input is not a terminal to ask on)");
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
    // Waits for the prompt, so that echo is off before the secret is typed.
    std::string shown;
    while (shown.find("Please provide the password:") == std::string::npos) {
        pollfd ready{terminal, POLLIN, 0};
        ASSERT_EQ(poll(&ready, 1, 10000), 1) << "no prompt; shown: " << shown;
        char buffer[256];
        const ssize_t count = read(terminal, buffer, sizeof buffer);
        ASSERT_GT(count, 0);
        shown.append(buffer, static_cast<std::size_t>(count));
    }
    const std::string typed = "typed secret\n";
    ASSERT_EQ(write(terminal, typed.data(), typed.size()), static_cast<ssize_t>(typed.size()));
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    // What the terminal shows after the prompt: no echo of the secret.
    for (;;) {
        pollfd ready{terminal, POLLIN, 0};
        char buffer[256];
        if (poll(&ready, 1, 100) != 1) break;
        const ssize_t count = read(terminal, buffer, sizeof buffer);
        if (count <= 0) break;
        shown.append(buffer, static_cast<std::size_t>(count));
    }
    close(terminal);
    ASSERT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(shown.find("typed"), std::string::npos) << shown;
}

}  // namespace
