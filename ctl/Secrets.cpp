#include "ctl/Secrets.h"

#include "ctl/Failure.h"
#include "npa/PasswordPrompt.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace corvelctl {

namespace {

// Closes a descriptor at the end of its scope.
class Descriptor {
public:
    explicit Descriptor(int fd) : m_Fd(fd) {}
    ~Descriptor()
    {
        if (m_Fd >= 0) close(m_Fd);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return m_Fd; }

private:
    int m_Fd;
};

// A stack buffer for reading that is wiped whatever happens.
struct ReadBuffer {
    char bytes[kSecretSourceLimit + 1];
    std::size_t size = 0;
    ~ReadBuffer() { explicit_bzero(bytes, sizeof bytes); }
};

// Reads `fd` to its end or until one byte more than the limit. Returns errno
// of a failed read, else 0.
int readBounded(int fd, ReadBuffer& buffer)
{
    while (buffer.size < sizeof buffer.bytes) {
        const ssize_t count = read(fd, buffer.bytes + buffer.size, sizeof buffer.bytes - buffer.size);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return errno;
        if (count == 0) break;
        buffer.size += static_cast<std::size_t>(count);
    }
    return 0;
}

Secret withoutFinalLineEnd(const ReadBuffer& buffer, const std::string& source)
{
    if (buffer.size > kSecretSourceLimit) {
        throw Failure(ExitStatus::DataError, source + " holds more than " + std::to_string(kSecretSourceLimit) +
                                                 " bytes; no secret is that long");
    }
    std::size_t size = buffer.size;
    if (size > 0 && buffer.bytes[size - 1] == '\n') {
        --size;
        if (size > 0 && buffer.bytes[size - 1] == '\r') --size;
    }
    return Secret(std::string_view(buffer.bytes, size));
}

bool isPrintableAscii(char c) { return c >= 0x20 && c <= 0x7E; }

bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

template <typename Predicate>
bool all(std::string_view text, Predicate predicate)
{
    for (const char c : text) {
        if (!predicate(c)) return false;
    }
    return true;
}

Failure badSecret(const std::string& what) { return Failure(ExitStatus::DataError, what); }

void validateWpaPassphrase(std::string_view passphrase)
{
    if (passphrase.size() == 64) {
        if (!all(passphrase, isHexDigit)) {
            throw badSecret("the passphrase has 64 characters, so it must be 64 hex digits (a key), and it is not; "
                            "a passphrase has 8-63 characters");
        }
        return;
    }
    if (passphrase.size() < 8 || passphrase.size() > 63) {
        throw badSecret("the passphrase has " + std::to_string(passphrase.size()) +
                        " characters; WPA needs 8-63 printable ASCII characters or 64 hex digits");
    }
    if (!all(passphrase, isPrintableAscii)) {
        throw badSecret("the passphrase holds a character that is not printable ASCII; WPA needs 8-63 printable "
                        "ASCII characters or 64 hex digits");
    }
}

// The lines of `text` ("\n"-separated, a "\r" before each "\n" dropped).
std::vector<std::string_view> lines(std::string_view text)
{
    std::vector<std::string_view> result;
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find('\n', start);
        std::string_view line =
            text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start);
        if (end != std::string_view::npos && !line.empty() && line.back() == '\r') line.remove_suffix(1);
        result.push_back(line);
        if (end == std::string_view::npos) return result;
        start = end + 1;
    }
}

void validateWepKeys(std::string_view text, int wepTransmitKey)
{
    const std::vector<std::string_view> keys = lines(text);
    if (keys.size() > 4) {
        throw badSecret("the secret has " + std::to_string(keys.size()) + " lines; WEP takes 1-4 keys, one a line");
    }
    for (std::size_t i = 0; i < keys.size(); ++i) {
        const std::string_view key = keys[i];
        const std::string name = "WEP key " + std::to_string(i + 1);
        const bool text = (key.size() == 5 || key.size() == 13) && all(key, isPrintableAscii);
        const bool hex = (key.size() == 10 || key.size() == 26) && all(key, isHexDigit);
        if (text || hex) continue;
        if (key.size() == 10 || key.size() == 26) {
            throw badSecret(name + " has " + std::to_string(key.size()) +
                            " characters, so it must be hex digits, and it is not");
        }
        throw badSecret(name + " has " + std::to_string(key.size()) +
                        " characters; a key is 5 or 13 printable ASCII characters or 10 or 26 hex digits");
    }
    if (wepTransmitKey < 1 || static_cast<std::size_t>(wepTransmitKey) > keys.size()) {
        throw badSecret("--wep-tx-key " + std::to_string(wepTransmitKey) + " names no key: the secret holds " +
                        std::to_string(keys.size()) + (keys.size() == 1 ? " key" : " keys"));
    }
}

}  // namespace

namespace {

// How a file that holds a secret is named in messages, and what its messages
// suggest.
struct PrivateFileKind {
    const char* label;           // "passphrase file"
    const char* notRegularHint;  // added to "is not a regular file"
    const char* sharedHint;      // what to do about a file open to group or others
};

const PrivateFileKind kPassphraseFile = {"passphrase file", " (for a pipe, use --passphrase-stdin)",
                                         "chmod go= it, or give --allow-shared-file"};
const PrivateFileKind kSettingsFile = {"settings file", "", "chmod go= it"};

// Reads the file at `path` into `buffer` after checking it: opened without
// following a symbolic link, a regular file, closed to group and others
// unless `allowSharedFile`.
void readPrivateFile(const std::string& path, const PrivateFileKind& kind, bool allowSharedFile, ReadBuffer& buffer)
{
    const std::string name = std::string(kind.label) + " " + path;
    const Descriptor file(open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (file.get() < 0) {
        const int reason = errno;
        if (reason == ELOOP) throw Failure(ExitStatus::Usage, name + " is a symbolic link; name the file itself");
        throw Failure(ExitStatus::NoInput, "cannot open " + name + ": " + std::strerror(reason));
    }
    struct stat status {};
    if (fstat(file.get(), &status) != 0) {
        throw Failure(ExitStatus::NoInput, "cannot read " + name + ": " + std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        throw Failure(ExitStatus::Usage, name + " is not a regular file" + kind.notRegularHint);
    }
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0 && !allowSharedFile) {
        char mode[8];
        std::snprintf(mode, sizeof mode, "%04o", static_cast<unsigned>(status.st_mode & 07777));
        throw Failure(ExitStatus::Usage, name + " is open to group or others (mode " + mode + "); " + kind.sharedHint);
    }
    if (const int reason = readBounded(file.get(), buffer)) {
        throw Failure(ExitStatus::NoInput, "cannot read " + name + ": " + std::strerror(reason));
    }
}

}  // namespace

Secret readSecretFile(const std::string& path, bool allowSharedFile)
{
    ReadBuffer buffer;
    readPrivateFile(path, kPassphraseFile, allowSharedFile, buffer);
    return withoutFinalLineEnd(buffer, "passphrase file " + path);
}

Secret readSettingsFile(const std::string& path)
{
    ReadBuffer buffer;
    readPrivateFile(path, kSettingsFile, false, buffer);
    if (buffer.size > kSecretSourceLimit) {
        throw Failure(ExitStatus::DataError, "settings file " + path + " holds more than " +
                                                 std::to_string(kSecretSourceLimit) + " bytes; it cannot be one");
    }
    return Secret(std::string_view(buffer.bytes, buffer.size));
}

Secret readSecretStream(int fd)
{
    ReadBuffer buffer;
    if (const int reason = readBounded(fd, buffer)) {
        throw Failure(ExitStatus::NoInput, std::string("cannot read standard input: ") + std::strerror(reason));
    }
    return withoutFinalLineEnd(buffer, "standard input");
}

Secret promptForSecret()
{
    if (!isatty(STDIN_FILENO)) {
        throw Failure(ExitStatus::Usage, "where is the secret? give --passphrase-file FILE or --passphrase-stdin "
                                         "(standard input is not a terminal to ask on)");
    }
    const Descriptor terminal(open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (terminal.get() < 0) {
        throw Failure(ExitStatus::NoInput,
                      std::string("cannot open the terminal to ask for the secret: ") + std::strerror(errno));
    }
    std::FILE* output = fdopen(dup(terminal.get()), "w");
    if (output == nullptr) {
        throw Failure(ExitStatus::NoInput, std::string("cannot write on the terminal: ") + std::strerror(errno));
    }
    std::string typed = promptForPassword(terminal.get(), output);
    std::fclose(output);
    Secret secret(typed);
    explicit_bzero(typed.data(), typed.size());
    return secret;
}

Secret obtainSecret(const WifiOptions& options)
{
    Secret secret;
    switch (options.secretSource) {
    case SecretSource::NotNeeded: return secret;
    case SecretSource::File: secret = readSecretFile(options.passphraseFile, options.allowSharedFile); break;
    case SecretSource::Stdin: secret = readSecretStream(STDIN_FILENO); break;
    case SecretSource::Prompt: secret = promptForSecret(); break;
    }
    validateSecret(secret, options.security, options.wepTransmitKey);
    return secret;
}

void validateSecret(const Secret& secret, Security security, int wepTransmitKey)
{
    const std::string_view text = secret.reveal();
    if (text.find('\0') != std::string_view::npos) throw badSecret("the secret holds a NUL byte");
    switch (security) {
    case Security::None: return;
    case Security::WpaWpa2Psk:
    case Security::Wpa2Psk: validateWpaPassphrase(text); return;
    case Security::WepOpen:
    case Security::WepShared: validateWepKeys(text, wepTransmitKey); return;
    case Security::Ieee8021x:
        if (text.empty() || text.size() > 255) {
            throw badSecret("the 802.1x password has " + std::to_string(text.size()) + " bytes; it must have 1-255");
        }
        return;
    }
}

std::vector<Secret> wepKeys(const Secret& secret)
{
    std::vector<Secret> keys;
    for (const std::string_view line : lines(secret.reveal())) keys.emplace_back(line);
    return keys;
}

}  // namespace corvelctl
