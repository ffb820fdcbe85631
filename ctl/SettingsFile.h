// A provisioning settings file: the wifi command's settings as "key = value"
// lines, read with the very rules of the wifi command's options.
//
//   # office network
//   ssid = Office Net
//   security = wpa2-psk
//   passphrase = correct horse battery
//
// The keys are the wifi options' names (ssid, security, channel, mode,
// encryption, wep-tx-key, eap, inner, user, wait) and passphrase, the secret
// (WPA passphrase, one WEP key, 802.1x password). Blanks around key and value
// are dropped; a line whose first non-blank character is '#' is a comment.
// Every failure is bad data (exit 65) and names the file (and the line, for
// a line that cannot be read).
#pragma once

#include "ctl/CommandLine.h"
#include "ctl/Secret.h"

#include <map>
#include <string>
#include <string_view>

namespace corvelctl {

// The lines of a settings file, not yet checked against the wifi rules.
struct SettingsLines {
    std::map<std::string, std::string> values;  // every key but passphrase
    std::map<std::string, int> lineOf;          // every key given, passphrase too
    Secret passphrase;                          // empty when not given
};

// Splits `text` into its settings. Throws Failure (exit 65) naming `file`
// and the line for a line without '=', an unknown key or one given twice.
SettingsLines parseSettingsLines(std::string_view text, const std::string& file);

// What a settings file asks for: the wifi settings and their checked secret.
struct ProvisionSettings {
    WifiOptions wifi;
    Secret secret;  // empty for security none
};

// Applies the wifi rules and the secret's checks to `lines`; a failure is
// exit 65, its message led by the file's name.
ProvisionSettings checkSettings(const SettingsLines& lines, const std::string& file);

// Reads and checks the settings file at `path` (a private file, as a
// passphrase file must be: see readSettingsFile).
ProvisionSettings readProvisionSettings(const std::string& path);

}  // namespace corvelctl
