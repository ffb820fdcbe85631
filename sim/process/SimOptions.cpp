#include "sim/process/SimOptions.h"

#include <algorithm>
#include <string>

namespace corvelsim {

namespace {

const int kMaxPolls = 1000000;
const int kMaxLp = 16;
const int kMaxUsbDevice = 127;

bool parseInt(const std::string& text, int low, int high, int& value)
{
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos) return false;
    value = std::stoi(text);
    return value >= low && value <= high;
}

bool parseAddress(const std::string& text, std::array<uint8_t, 4>& address)
{
    std::array<uint8_t, 4> parts{};
    size_t at = 0;
    for (size_t i = 0; i < 4; ++i) {
        size_t end = i < 3 ? text.find('.', at) : text.size();
        if (end == std::string::npos) return false;
        int part = 0;
        if (!parseInt(text.substr(at, end - at), 0, 255, part)) return false;
        parts[i] = uint8_t(part);
        at = end + 1;
    }
    address = parts;
    return true;
}

// "BUS:DEV" as lsusb shows it ("001:004"; leading zeros optional).
bool parseUsbAddress(const std::string& text, UsbDeviceOptions& usb)
{
    const size_t colon = text.find(':');
    return colon != std::string::npos && parseInt(text.substr(0, colon), 1, 255, usb.bus) &&
           parseInt(text.substr(colon + 1), 1, 127, usb.device);
}

// Without an lp node the printer is reached over libusb only, so it needs
// its USB device, and no lp node can be asked for.
bool checkNoLp(const SimOptions& options, std::string& error)
{
    if (!options.lpNumbers.empty())
        error = "--no-lp and --lp cannot go together: --no-lp attaches no lp node";
    else if (options.usb.bus == 0)
        error = "--no-lp needs --usb BUS:DEV: without an lp node libusb is the only way to the printer";
    return error.empty();
}

// "K:NAME[=V]", the fault checked as --fault checks it.
bool parsePrinterFault(const std::string& text, std::vector<PrinterFault>& faults, std::string& error)
{
    const size_t colon = text.find(':');
    PrinterFault fault;
    if (colon == std::string::npos || !parseInt(text.substr(0, colon), 1, kMaxPrinters, fault.printer)) {
        error = "--printer-fault needs K:NAME[=V], K a printer's number from 1 to " + std::to_string(kMaxPrinters);
        return false;
    }
    fault.fault = text.substr(colon + 1);
    FaultSet unused;
    if (!addFault(unused, fault.fault, error)) return false;
    faults.push_back(fault);
    return true;
}

// What several printers need: one file each, a node and a device number each
// in range, and faults for printers that exist.
bool checkPrinters(const SimOptions& options, std::string& error)
{
    const int count = options.printers;
    const std::string many = "with --printers " + std::to_string(count);
    const std::string& serial = options.usb.identity.serial;
    if (!options.statePath.empty() && !options.stateDir.empty())
        error =
            "--state and --state-dir cannot go together: --state-dir keeps each printer's state in DIR/SERIAL.state";
    else if (!options.logPath.empty() && !options.logDir.empty())
        error = "--log and --log-dir cannot go together: --log-dir writes each printer's log to DIR/SERIAL.log";
    else if (count > 1 && !options.statePath.empty())
        error = "--state FILE holds one printer's state; " + many + " use --state-dir DIR (DIR/SERIAL.state)";
    else if (count > 1 && !options.logPath.empty())
        error = "--log FILE is one printer's log; " + many + " use --log-dir DIR (DIR/SERIAL.log)";
    else if ((!options.stateDir.empty() || !options.logDir.empty()) && serial.find('/') != std::string::npos)
        error = "--state-dir and --log-dir name files after the serial, which cannot hold a '/'";
    else if (count > 1 && options.lpNumbers.size() > 1)
        error = "--lp is the first printer's node " + many + " (printer K has lp(N+K-1)): give it once";
    else if (count > 1 && !options.noLp && options.lpNumbers.front() + count - 1 > kMaxLp)
        error = many + " from --lp " + std::to_string(options.lpNumbers.front()) + " the last lp number passes " +
                std::to_string(kMaxLp);
    else if (count > 1 && options.usb.bus != 0 && options.usb.device + count - 1 > kMaxUsbDevice)
        error = many + " from --usb device " + std::to_string(options.usb.device) + " the last device number passes " +
                std::to_string(kMaxUsbDevice);
    for (const PrinterFault& fault : options.printerFaults) {
        if (!error.empty()) break;
        if (fault.printer > count)
            error = "--printer-fault " + std::to_string(fault.printer) + ":" + fault.fault + " names printer " +
                    std::to_string(fault.printer) + ", but there " +
                    (count == 1 ? "is 1" : "are " + std::to_string(count)) + " (--printers)";
    }
    return error.empty();
}

}  // namespace

std::string helpText()
{
    return std::string("Usage: corvelsim [options] [-- command [args...]]\n"
                       "\n"
                       "Simulates a printer attached by USB: /dev/usb/lp0 (and any other node asked\n"
                       "for; none with --no-lp) exists for the command, which runs with the simulated\n"
                       "printer attached; corvelsim ends with the command's exit status (128 + signal\n"
                       "when a signal ended it), 127 when the command is not found, 126 when it\n"
                       "cannot be run, 2 when corvelsim itself cannot start. The command starts\n"
                       "with default signal actions and no signal blocked. Without a command it\n"
                       "starts an interactive shell ($SHELL or /bin/sh) in which the printer stays\n"
                       "attached until the shell exits.\n"
                       "\n"
                       "Options:\n"
                       "  --lp N            attach /dev/usb/lpN (0..16); repeatable; default 0\n"
                       "  --no-lp           attach no lp node, as when the kernel's usblp driver is\n"
                       "                    not loaded: the printer is only its USB device, whose\n"
                       "                    printer interface no driver holds, reached over libusb.\n"
                       "                    Needs --usb; not with --lp\n"
                       "  --usb BUS:DEV     attach the printer to the USB bus as well, as device DEV\n"
                       "                    (1..127) on bus BUS (1..255), such as 001:004:\n"
                       "                    /dev/bus/usb/BUS/DEV, for libusb. Same state, log and\n"
                       "                    faults as the lp node(s)\n"
                       "  --usb-packet N    packet size of its bulk endpoints (1..1023, default 64)\n"
                       "  --usb-layout L    printer (default); second-claims: two printer interfaces,\n"
                       "                    the first refuses the claim (its endpoints announce\n"
                       "                    8-byte packets, the second's OUT endpoint 512-byte\n"
                       "                    ones); no-printer: a vendor-class interface only;\n"
                       "                    no-bulk-in: no bulk IN endpoint\n"
                       "  --usb-trace FILE  append one line per bulk transfer of the USB device to\n"
                       "                    FILE: out|in|discarded, endpoint, bytes, real ms since\n"
                       "                    it was submitted\n"
                       "  --vendor-id HEX   the printers' USB vendor id, 1 to 4 hex digits (default\n"
                       "                    c0de), in sysfs (idVendor), udev (ID_VENDOR_ID) and the\n"
                       "                    device descriptor libusb reads\n"
                       "  --product-id HEX  their product id, likewise (default 0001)\n"
                       "  --manufacturer TEXT, --product TEXT, --serial TEXT\n"
                       "                    their manufacturer (default Corvel), product (default\n"
                       "                    Simulated Printer) and serial number (default\n"
                       "                    CVSIM0001) strings: 1 to 64 printable ASCII characters.\n"
                       "                    Each lp node is its own printer, a USB device with one\n"
                       "                    printer interface; the first (lowest lp number) is the\n"
                       "                    one --usb puts on the bus and has the serial as given,\n"
                       "                    the others have SERIAL-lpN\n"
                       "  --printers N      N independent printers (1..16) made like the first, which\n"
                       "                    the other options describe. Printer K has its own lp\n"
                       "                    node lp(L+K-1) from --lp L (none with --no-lp), its own\n"
                       "                    USB device DEV+K-1 on the bus of --usb BUS:DEV, its\n"
                       "                    serial the first's with its trailing number K-1 higher,\n"
                       "                    same width (CVSIM0001, CVSIM0002 ...; without trailing\n"
                       "                    digits SERIAL, SERIAL-2 ...), and its own state, log,\n"
                       "                    faults and network life; one --lp at most, and\n"
                       "                    --state-dir/--log-dir instead of --state/--log\n"
                       "  --state FILE      keep the printer's state in FILE: its settings, the\n"
                       "                    subject readCertDefaults answers, its keys and\n"
                       "                    certificates, so that one run's state is seen by the\n"
                       "                    next. FILE must be missing, empty or a state file\n"
                       "                    corvelsim wrote (first line \"# corvelsim state v2\"),\n"
                       "                    a regular file of at most 1 MiB; anything else is\n"
                       "                    refused (exit status 2) and left untouched. It is\n"
                       "                    written (mode 0600: it holds private keys) only when\n"
                       "                    the state changed; runs sharing it lock FILE.lock.\n"
                       "                    Without it the printer starts from factory settings and\n"
                       "                    forgets them when corvelsim ends (commands run in one\n"
                       "                    interactive shell share them)\n"
                       "  --log FILE        append one JSON line per request received to FILE:\n"
                       "                    seq, port, kind (read, settings, certmgr, unknown),\n"
                       "                    envelope, raw (hex), group/field for reads, items and\n"
                       "                    accepted for settings, method, params and status_code\n"
                       "                    for certificate-manager calls, problem, answered,\n"
                       "                    answer (hex), faults, delay_ms; route: lp, or usb with\n"
                       "                    bulk_out, the sizes of the request's bulk transfers\n"
                       "                    (\"64,36\"); serial: the printer's\n"
                       "  --state-dir DIR   keep each printer's state in DIR/SERIAL.state, as --state\n"
                       "  --log-dir DIR     append each printer's requests to DIR/SERIAL.log, as --log\n"
                       "  --speed N         run the command under faketime N times faster (1..100,\n"
                       "                    1 is real time) so that its fixed waits pass quickly;\n"
                       "                    the printer itself answers at once, in real time\n"
                       "  --kill-after MS   when corvelsim gets SIGTERM or SIGHUP it sends the command\n"
                       "                    SIGTERM, and SIGKILL if it has not ended MS real\n"
                       "                    milliseconds later (0..600000, default 5000); corvelsim\n"
                       "                    then ends with 137 (128 + SIGKILL)\n"
                       "  --join-after N    the printer joins the network on the N-th connection poll\n"
                       "                    (28/15) once SSID and the secret its security needs are\n"
                       "                    set (0..1000000, default 1; 0 joins at once)\n"
                       "  --ready-after N   06/1F reads 0x2D from the N-th poll on (0..1000000,\n"
                       "                    default 1)\n"
                       "  --ip A.B.C.D      the address reported once joined, each part 0..255\n"
                       "                    (default 192.168.1.57)\n"
                       "  --fault NAME[=V]  misbehave; repeatable. NAME is one of:\n") +
           faultHelp() +
           "  --printer-fault K:NAME[=V]\n"
           "                    a fault of printer K (1..N of --printers) alone, added to\n"
           "                    those --fault gives every printer; repeatable\n"
           "  --version         print corvelsim's version and exit\n"
           "  -h, --help        show this text\n"
           "\n"
           "The printer answers reads of 28/08 (SSID), 28/15 (connection state), 06/1F,\n"
           "0A/02 (IPv4 address), 2A/1D (802.1x status), 2A/06 and 2A/0A (certificate\n"
           "organization and common name) and of every field it was sent; settings\n"
           "requests (06/14 = 1 resets the network); plain or in a pass-through envelope.\n"
           "Unknown requests get a refusal (flags 0xD4). Its certificate manager answers\n"
           "the ten methods of applications.certMgr with real keys (EC P-256): a signing\n"
           "request for a generated key, signed certificates that match it, CA\n"
           "certificates listed as \"CN_Mon_D_YYYY_To_Mon_D_YYYY\". 2A/1D follows from what\n"
           "the printer holds (see the README).\n";
}

std::string versionText() { return std::string("corvelsim ") + CORVELSIM_VERSION + "\n"; }

bool parseOptions(int argc, const char* const* argv, SimOptions& options, std::string& error)
{
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "--") {
            options.command.assign(argv + i + 1, argv + argc);
            break;
        }
        if (arg == "-h" || arg == "--help") {
            options.help = true;
            continue;
        }
        if (arg == "--version") {
            options.version = true;
            continue;
        }
        if (arg == "--no-lp") {
            options.noLp = true;
            continue;
        }
        std::string name = arg;
        std::string value;
        size_t equals = arg.find('=');
        if (arg.rfind("--", 0) == 0 && equals != std::string::npos) {
            name = arg.substr(0, equals);
            value = arg.substr(equals + 1);
        } else if (i + 1 < argc) {
            value = argv[i + 1];
            if (name == "--lp" || name == "--state" || name == "--log" || name == "--speed" || name == "--kill-after" ||
                name == "--join-after" || name == "--ready-after" || name == "--ip" || name == "--fault" ||
                name == "--usb" || name == "--usb-packet" || name == "--usb-layout" || name == "--usb-trace" ||
                name == "--vendor-id" || name == "--product-id" || name == "--manufacturer" || name == "--product" ||
                name == "--serial" || name == "--printers" || name == "--state-dir" || name == "--log-dir" ||
                name == "--printer-fault")
                ++i;
        } else if (name.rfind("--", 0) == 0) {
            error = "option " + name + " needs a value";
            return false;
        }

        int number = 0;
        if (name == "--lp") {
            if (!parseInt(value, 0, kMaxLp, number)) {
                error = "--lp needs a number from 0 to 16";
                return false;
            }
            options.lpNumbers.push_back(number);
        } else if (name == "--state") {
            options.statePath = value;
        } else if (name == "--log") {
            options.logPath = value;
        } else if (name == "--printers") {
            if (!parseInt(value, 1, kMaxPrinters, options.printers)) {
                error = "--printers needs a count from 1 to " + std::to_string(kMaxPrinters);
                return false;
            }
        } else if (name == "--state-dir" || name == "--log-dir") {
            if (value.empty()) {
                error = name + " needs a folder";
                return false;
            }
            (name == "--state-dir" ? options.stateDir : options.logDir) = value;
        } else if (name == "--printer-fault") {
            if (!parsePrinterFault(value, options.printerFaults, error)) return false;
        } else if (name == "--speed") {
            if (!parseInt(value, 1, 100, options.speed)) {
                error = "--speed needs a factor from 1 to 100";
                return false;
            }
        } else if (name == "--kill-after") {
            if (!parseInt(value, 0, kMaxKillAfterMs, options.killAfterMs)) {
                error = "--kill-after needs real milliseconds from 0 to " + std::to_string(kMaxKillAfterMs);
                return false;
            }
        } else if (name == "--join-after") {
            if (!parseInt(value, 0, kMaxPolls, options.life.joinAfterPolls)) {
                error = "--join-after needs a count from 0 to " + std::to_string(kMaxPolls);
                return false;
            }
        } else if (name == "--ready-after") {
            if (!parseInt(value, 0, kMaxPolls, options.life.readyAfterPolls)) {
                error = "--ready-after needs a count from 0 to " + std::to_string(kMaxPolls);
                return false;
            }
        } else if (name == "--ip") {
            if (!parseAddress(value, options.life.address)) {
                error = "--ip needs an address A.B.C.D, each part from 0 to 255";
                return false;
            }
        } else if (name == "--usb") {
            if (!parseUsbAddress(value, options.usb)) {
                error = "--usb needs BUS:DEV, bus 1 to 255 and device 1 to 127";
                return false;
            }
        } else if (name == "--usb-packet") {
            if (!parseInt(value, 1, 1023, options.usb.packetSize)) {
                error = "--usb-packet needs a size from 1 to 1023";
                return false;
            }
        } else if (name == "--usb-layout") {
            if (!parseUsbLayout(value, options.usb.layout)) {
                error = "--usb-layout needs printer, second-claims, no-printer or no-bulk-in";
                return false;
            }
        } else if (name == "--usb-trace") {
            options.usb.tracePath = value;
        } else if (name == "--vendor-id" || name == "--product-id") {
            unsigned& id = name == "--vendor-id" ? options.usb.identity.vendorId : options.usb.identity.productId;
            if (!parseUsbId(value, id)) {
                error = name + " needs 1 to 4 hex digits";
                return false;
            }
        } else if (name == "--manufacturer" || name == "--product" || name == "--serial") {
            if (!isUsbText(value)) {
                error = name + " needs 1 to " + std::to_string(kMaxUsbTextLength) + " printable ASCII characters";
                return false;
            }
            UsbIdentity& identity = options.usb.identity;
            (name == "--manufacturer" ? identity.manufacturer
             : name == "--product"    ? identity.product
                                      : identity.serial) = value;
        } else if (name == "--fault") {
            if (!addFault(options.faults, value, error)) return false;
        } else if (name == "--no-lp") {
            error = "--no-lp takes no value";
            return false;
        } else {
            error = "unknown option '" + arg + "'";
            return false;
        }
    }
    if (options.noLp && !checkNoLp(options, error)) return false;
    if (!options.noLp && options.lpNumbers.empty()) options.lpNumbers.push_back(0);
    std::sort(options.lpNumbers.begin(), options.lpNumbers.end());
    options.lpNumbers.erase(std::unique(options.lpNumbers.begin(), options.lpNumbers.end()), options.lpNumbers.end());
    return checkPrinters(options, error);
}

}  // namespace corvelsim
