#include "ctl/HelpText.h"

namespace corvelctl {

namespace {

const char kGlobalOptions[] = R"(Global options (before or after the command):
  --printer SEL       the printer: /dev/usb/lpN, lpN, BUS:DEV (such as 1:4) or
                      serial:SERIAL; without it, the one printer attached.
                      Given again, the command runs on each printer named
  --all               run the command on every printer attached, all at once
                      (not with --printer; not for cert request, cert install)
  -j, --json          one JSON object on standard output; on several printers
                      one array of them, each with "serial" after "printer"
  -v, --verbose       trace the exchanges on standard error; -vv for more
  --timeout SECONDS   deadline of each exchange, 1-600, fractions allowed
                      (default 5; key generation and export get three times it)
  -h, --help          this help, or the help of the command it follows
  --version           the version
)";

const char kExitStatuses[] = R"(Exit status: 0 done, 1 the printer said no, 64 wrong command line, 65 bad data
in an input file, 66 input file missing or unreadable, 69 printer unavailable,
73 cannot create the output file, 74 I/O error, 75 no answer in time,
76 malformed answer, 77 no permission to open the printer. On several printers:
the greatest status of those that failed, 0 when none did.
)";

}  // namespace

std::string programHelp()
{
    return std::string(R"(Usage: corvelctl [OPTIONS] COMMAND [COMMAND OPTIONS]
Configures the Wi-Fi of a printer attached by USB.

Commands:
  list                 the USB printers attached
  status               SSID, connection, IPv4 address, 802.1x and certificate
  wifi                 join a network: corvelctl wifi --ssid SSID --security SEC
  provision            apply the printer's settings file (when plugged in)
  cert defaults        the printer's default certificate subject
  cert request         have the printer make a key and a certificate request
  cert install-ca FILE install a CA certificate
  cert install FILE    install the printer's own signed certificate
  reset                reset the printer's network interface

)") + kGlobalOptions +
           "\n'corvelctl COMMAND --help' shows the options of a command.\n\n" + kExitStatuses;
}

std::string certHelp()
{
    return R"(Usage: corvelctl cert defaults | request | install-ca FILE | install FILE

  defaults             the printer's default certificate subject
  request              have the printer make a key and a certificate request
  install-ca FILE      install a CA certificate (one of the same name is replaced)
  install FILE         install the printer's own signed certificate

'corvelctl cert SUBCOMMAND --help' shows its options.
)";
}

std::string commandHelp(Command command)
{
    std::string text;
    switch (command) {
    case Command::List:
        text = R"(Usage: corvelctl list [--json]
Lists the USB printers attached (USB interface class 7) without talking to
them: device node, bus:device, vendor and product id, manufacturer, product
and serial number.
)";
        break;
    case Command::Status:
        text = R"(Usage: corvelctl status [--printer SEL]... [--all] [--json]
Shows the printer's SSID, connection state, IPv4 address, 802.1x status and the
organization and common name of its certificate.
)";
        break;
    case Command::Wifi:
        text = R"(Usage: corvelctl wifi --ssid SSID --security SEC [OPTIONS]
Sets the printer's wireless network.

  --ssid SSID             the network name, 1-32 bytes (required)
  --security SEC          none, wep-open, wep-shared, wpa-wpa2-psk (WPA or
                          WPA2), wpa2-psk or 802.1x (required)
  --channel N             1-11 (default 6)
  --mode MODE             managed or ad-hoc (default managed)
  --encryption ENC        WPA: tkip or aes; 802.1x: wep-dynamic, tkip or aes
                          (default aes); not with none or WEP
  --wep-tx-key N          the WEP key to send with, 1-4 (default 1)
  --eap LIST              802.1x: comma-separated md5, mschapv2, leap, peap,
                          tls, ttls (required with 802.1x)
  --inner METHOD          802.1x with peap or ttls: chap, mschap, mschapv2, pap
  --user NAME             802.1x: the user name, 1-31 bytes (required)
  --passphrase-file FILE  read the secret from FILE (not open to group or others)
  --allow-shared-file     accept a passphrase file that group or others can open
  --passphrase-stdin      read the secret from standard input
  --wait[=SECONDS]        then wait until the printer has joined and has an
                          address, and show it (default 60, 1-3600)

The secret is never given on the command line. Without --passphrase-file or
--passphrase-stdin it is asked for on the terminal (one line, not shown).
A final line end is removed. WPA: 8-63 printable ASCII characters or 64 hex
digits. WEP: 1-4 keys, one a line, each 5 or 13 characters or 10 or 26 hex
digits (the prompt takes one key). 802.1x: the password, 1-255 bytes.
)";
        break;
    case Command::Provision:
        text = R"(Usage: corvelctl [--printer serial:SERIAL] provision [--settings FILE |
                                                          --settings-dir DIR]
Applies a settings file as the wifi command applies its options: the file's
lines are "key = value" (ssid, security, channel, mode, encryption,
wep-tx-key, eap, inner, user, wait, passphrase), '#' starts a comment line.
The file must be a regular file not open to group or others.

  --settings FILE     the settings file to apply
  --settings-dir DIR  where to look for SERIAL.conf (SERIAL: the printer's
                      serial number), else default.conf
                      (default /etc/corvelcfg/printers)

Without a file to apply, it says so in one line and exits 0. It waits up to
10 seconds for the printer (and its /dev/usb/lpN node) to appear.
)";
        break;
    case Command::CertDefaults:
        text = R"(Usage: corvelctl cert defaults [--printer SEL]... [--all] [--json]
Shows the subject the printer puts in a certificate request by default.
)";
        break;
    case Command::CertRequest:
        text = R"(Usage: corvelctl cert request --out FILE --common-name CN [OPTIONS]
Has the printer make a key and a certificate request; writes the request (PEM)
to FILE. FILE is replaced whole or not at all, never through a symbolic link.
One printer only: the request belongs to the printer that made it.

  --out FILE          where the request goes (required)
  --force             replace FILE if it exists
  --common-name CN    1-64 bytes (required)
  --org O             organization, 1-64 bytes
  --unit U            organizational unit, 1-64 bytes
  --state S           state or province, 1-128 bytes
  --country CC        two letters (such as DE)
  --city L            locality, 1-128 bytes
  --altname A         subject alternative name, 1-255 bytes
)";
        break;
    case Command::CertInstallCa:
        text = R"(Usage: corvelctl cert install-ca FILE [--printer SEL]... [--all] [--json]
Installs the CA certificate in FILE (PEM) on the printer; one of the same name
is replaced.
)";
        break;
    case Command::CertInstall:
        text = R"(Usage: corvelctl cert install FILE [--printer SEL] [--json]
Installs the printer's own certificate in FILE (PEM), signed from its request.
One printer only: the certificate belongs to the printer whose request it signs.
)";
        break;
    case Command::Reset:
        text = R"(Usage: corvelctl reset [--printer SEL]... [--all] [--json]
Resets the printer's network interface.
)";
        break;
    }
    return text + "\n" + kGlobalOptions;
}

std::string versionText() { return std::string("corvelctl ") + CORVELCTL_VERSION + "\n"; }

}  // namespace corvelctl
