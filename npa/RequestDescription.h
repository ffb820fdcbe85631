// Telling what a request asks, in words, and hiding the secrets it carries,
// for the traces of front ends.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace npa {

// "read 28:08", "settings (6 items)", "certificate-manager call"; wrapped
// requests get " in the pass-through envelope".
std::string describeRequest(const std::vector<uint8_t>& request);

// The request with the values of its secret items (the WEP keys, the
// pre-shared key or password, the 802.1x password) overwritten with '*'.
std::vector<uint8_t> maskSecrets(const std::vector<uint8_t>& request);

}  // namespace npa
