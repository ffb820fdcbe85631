// The configuration record: every setting sent to the printer and every input
// of the certificate commands, as text, filled once per run by a front end.
#pragma once

#include <string>

// The printer when a command line names none.
inline const char* const kDefaultUsbPath = "/dev/usb/lp0";

struct ConfigDetails {
    std::string usbPath = kDefaultUsbPath;
    std::string ssid;
    std::string channel = "6";
    std::string mode = "Managed";
    std::string security = "None";
    std::string passwd;
    std::string npaData;  // hexadecimal digits of the "-npa" packet file
    std::string encryption;
    std::string authExt;
    std::string authInner;
    std::string user8021x;
    std::string pwd8021x;
    std::string caCerFile;
    std::string signedCerFile;
    std::string wepKey[4];
    std::string wepTransmit;
    std::string psk;
    std::string cerCommon;
    std::string cerOrg;
    std::string cerUnit;
    std::string cerState;
    std::string cerCountry;
    std::string cerCity;
    std::string cerAltname;
    std::string cerFriendlyName;
    std::string cerPath;
};
