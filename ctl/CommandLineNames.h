// The words of the command line and what they stand for: the commands, the
// cert subcommands and the named values of the wifi options.
#pragma once

#include "ctl/CommandLine.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace corvelctl {

template <typename Value>
struct Named {
    const char* name;
    Value value;
};

inline constexpr Named<Security> kSecurities[] = {{"none", Security::None},
                                                  {"wep-open", Security::WepOpen},
                                                  {"wep-shared", Security::WepShared},
                                                  {"wpa-wpa2-psk", Security::WpaWpa2Psk},
                                                  {"wpa2-psk", Security::Wpa2Psk},
                                                  {"802.1x", Security::Ieee8021x}};
inline constexpr Named<Encryption> kEncryptions[] = {
    {"aes", Encryption::Aes}, {"tkip", Encryption::Tkip}, {"wep-dynamic", Encryption::WepDynamic}};
inline constexpr Named<WirelessMode> kModes[] = {{"managed", WirelessMode::Managed}, {"ad-hoc", WirelessMode::AdHoc}};
inline constexpr Named<EapMethod> kEapMethods[] = {{"md5", EapMethod::Md5},   {"mschapv2", EapMethod::Mschapv2},
                                                   {"leap", EapMethod::Leap}, {"peap", EapMethod::Peap},
                                                   {"tls", EapMethod::Tls},   {"ttls", EapMethod::Ttls}};
inline constexpr Named<InnerAuthentication> kInnerMethods[] = {{"chap", InnerAuthentication::Chap},
                                                               {"mschap", InnerAuthentication::Mschap},
                                                               {"mschapv2", InnerAuthentication::Mschapv2},
                                                               {"pap", InnerAuthentication::Pap}};

// "cert" is not among the commands: it only leads to its subcommands.
inline constexpr Named<Command> kCommands[] = {{"list", Command::List},
                                               {"status", Command::Status},
                                               {"wifi", Command::Wifi},
                                               {"provision", Command::Provision},
                                               {"reset", Command::Reset}};
inline constexpr Named<Command> kCertSubcommands[] = {{"defaults", Command::CertDefaults},
                                                      {"request", Command::CertRequest},
                                                      {"install-ca", Command::CertInstallCa},
                                                      {"install", Command::CertInstall}};
inline constexpr char kCommandList[] = "list, status, wifi, provision, cert, reset";
inline constexpr char kCertSubcommandList[] = "defaults, request, install-ca, install";

// "a, b, c", for messages that say what is allowed.
template <typename Value, std::size_t N>
std::string namesOf(const Named<Value> (&table)[N])
{
    std::string names;
    for (std::size_t i = 0; i < N; ++i) names += (i == 0 ? "" : ", ") + std::string(table[i].name);
    return names;
}

template <typename Value, std::size_t N>
const Named<Value>* findNamed(const Named<Value> (&table)[N], std::string_view name)
{
    for (const auto& entry : table) {
        if (name == entry.name) return &entry;
    }
    return nullptr;
}

template <typename Value, std::size_t N>
const char* nameOf(const Named<Value> (&table)[N], Value value)
{
    for (const auto& entry : table) {
        if (entry.value == value) return entry.name;
    }
    return "?";
}

}  // namespace corvelctl
