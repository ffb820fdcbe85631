#include "ctl/SettingsFile.h"

#include "ctl/Failure.h"
#include "ctl/Secrets.h"
#include "ctl/WifiRules.h"

#include <algorithm>
#include <set>

namespace corvelctl {

namespace {

const char* const kKeys[] = {"ssid", "security", "channel", "mode", "encryption", "wep-tx-key",
                             "eap",  "inner",    "user",    "wait", "passphrase"};

std::string keyList()
{
    std::string list;
    for (const char* key : kKeys) list += (list.empty() ? "" : ", ") + std::string(key);
    return list;
}

bool isKnownKey(std::string_view key)
{
    for (const char* known : kKeys) {
        if (key == known) return true;
    }
    return false;
}

std::string_view trimmed(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

Failure badData(const std::string& message) { return Failure(ExitStatus::DataError, message); }

}  // namespace

SettingsLines parseSettingsLines(std::string_view text, const std::string& file)
{
    SettingsLines lines;
    if (text.find('\0') != std::string_view::npos) throw badData("settings file " + file + " holds a NUL byte");
    int number = 0;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        std::string_view line = text.substr(start, end - start);
        start = end + 1;
        ++number;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        line = trimmed(line);
        if (line.empty() || line.front() == '#') continue;
        const std::string where = "settings file " + file + " line " + std::to_string(number) + ": ";
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos) throw badData(where + "no '='; a setting is written key = value");
        const std::string key(trimmed(line.substr(0, equals)));
        const std::string_view value = trimmed(line.substr(equals + 1));
        if (!isKnownKey(key)) throw badData(where + "unknown key \"" + key + "\"; the keys are " + keyList());
        const auto [first, added] = lines.lineOf.emplace(key, number);
        if (!added) throw badData(where + key + " given twice (first on line " + std::to_string(first->second) + ")");
        if (key == "passphrase") {
            lines.passphrase = Secret(value);
        } else {
            lines.values.emplace(key, std::string(value));
        }
    }
    return lines;
}

ProvisionSettings checkSettings(const SettingsLines& lines, const std::string& file)
{
    ProvisionSettings settings;
    const std::set<std::string> noFlags;
    try {
        settings.wifi = readWifiSettings({lines.values, noFlags});
    } catch (const Failure& failure) {
        throw badData("settings file " + file + ": " + failure.message());
    }
    const auto passphraseLine = lines.lineOf.find("passphrase");
    if (settings.wifi.security == Security::None) {
        if (passphraseLine != lines.lineOf.end()) {
            throw badData("settings file " + file + " line " + std::to_string(passphraseLine->second) +
                          ": security none takes no passphrase; leave it out");
        }
        return settings;
    }
    if (passphraseLine == lines.lineOf.end()) {
        throw badData("settings file " + file + ": security " + securityName(settings.wifi.security) +
                      " needs a passphrase line (the WPA passphrase, the WEP key or the 802.1x password)");
    }
    try {
        validateSecret(lines.passphrase, settings.wifi.security, settings.wifi.wepTransmitKey);
    } catch (const Failure& failure) {
        throw badData("settings file " + file + ": " + failure.message());
    }
    settings.secret = Secret(lines.passphrase.reveal());
    return settings;
}

ProvisionSettings readProvisionSettings(const std::string& path)
{
    const Secret text = readSettingsFile(path);
    return checkSettings(parseSettingsLines(text.reveal(), path), path);
}

}  // namespace corvelctl
