// The rules of the wifi settings, shared by the wifi command's options and a
// provisioning settings file: which values are allowed, which settings each
// security needs, allows and refuses together.
#pragma once

#include "ctl/CommandLine.h"

#include <map>
#include <set>
#include <string>

namespace corvelctl {

// The settings as given, by their option names ("ssid", "wep-tx-key", ...):
// `values` those given with a value, `flags` those given without one.
struct WifiSettingTexts {
    const std::map<std::string, std::string>& values;
    const std::set<std::string>& flags;
};

// The wifi settings the texts describe. The secret's source is taken from
// passphrase-file, passphrase-stdin and allow-shared-file; without them it is
// SecretSource::Prompt (NotNeeded for --security none). Throws Failure (exit
// 64) whose message names the option (--ssid) that is wrong.
WifiOptions readWifiSettings(const WifiSettingTexts& texts);

}  // namespace corvelctl
