// Reading the secret of the wifi command from where the command line says,
// and checking it against the security chosen.
//
// Exit statuses of the failures: 66 when the file cannot be opened or read;
// 64 when corvelctl refuses a file it could read (a symbolic link, not a
// regular file, group or others have access without --allow-shared-file), as
// the user has to change the command line or the file; 65 for contents that
// do not fit (too long, not a passphrase or key of the kind required).
#pragma once

#include "ctl/CommandLine.h"
#include "ctl/Secret.h"

#include <cstddef>
#include <string>
#include <vector>

namespace corvelctl {

// The most a secret source may hold, its final line end included.
constexpr std::size_t kSecretSourceLimit = 4096;

// The file's contents without one final "\n" or "\r\n". The file is opened
// without following a symbolic link, and its mode checked on the opened
// descriptor.
Secret readSecretFile(const std::string& path, bool allowSharedFile);

// The whole of a provisioning settings file (it holds a secret), checked as
// readSecretFile checks a passphrase file, with no way to allow a shared one;
// at most kSecretSourceLimit bytes.
Secret readSettingsFile(const std::string& path);

// All of `fd` (standard input) up to its end, without one final line end.
Secret readSecretStream(int fd);

// One line typed without echo on the terminal (/dev/tty). A usage failure
// when standard input is not a terminal: scripts must say where the secret is.
Secret promptForSecret();

// Reads the secret from `options.secretSource` and checks it; an empty
// Secret when the security takes none.
Secret obtainSecret(const WifiOptions& options);

// Checks `secret` for `security`:
// - wpa-wpa2-psk, wpa2-psk: 8-63 printable ASCII characters or 64 hex digits;
// - wep-open, wep-shared: 1-4 keys, one a line, each 5 or 13 printable ASCII
//   characters or 10 or 26 hex digits, and `wepTransmitKey` names one of them;
// - 802.1x: a password of 1-255 bytes.
// No secret may hold a NUL byte. A failure (exit 65) says which rule is broken
// without showing the secret.
void validateSecret(const Secret& secret, Security security, int wepTransmitKey);

// The WEP keys of a checked secret, first key first ("\r" ends of lines
// removed).
std::vector<Secret> wepKeys(const Secret& secret);

}  // namespace corvelctl
