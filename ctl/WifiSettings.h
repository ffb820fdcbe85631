// The wifi command's options as the core's configuration record, so that the
// printer gets the same requests as from corvelcfg's advanced configuration.
#pragma once

#include <vector>

#include "ctl/CommandLine.h"
#include "ctl/Secret.h"
#include "npa/ConfigDetails.h"

namespace corvelctl {

// `secret` is the checked passphrase, WEP keys (one a line) or 802.1x password.
ConfigDetails wifiSettings(const WifiOptions& options, const Secret& secret, const std::string& printerPath);

}  // namespace corvelctl
