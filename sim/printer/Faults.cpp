#include "sim/printer/Faults.h"

#include "sim/wire/CertMgrCall.h"
#include "sim/wire/NpaPacket.h"

namespace corvelsim {

namespace {

bool parseCount(const std::string& text, int low, int high, int& value)
{
    if (text.empty() || text.size() > 6) return false;
    for (char c : text) {
        if (c < '0' || c > '9') return false;
    }
    int number = std::stoi(text);
    if (number < low || number > high) return false;
    value = number;
    return true;
}

// Faults that take a number: NAME[=N] when they have a default, NAME=N when not.
struct CountedFault {
    const char* name;
    int FaultSet::*count;
    int defaultCount;  // -1: a value is needed
    int low, high;
};

const CountedFault kCountedFaults[] = {
    {"noise", &FaultSet::noiseBytes, 4, 1, 4096},     {"split", &FaultSet::splitParts, 2, 2, 64},
    {"truncate", &FaultSet::truncateBy, 4, 1, 4096},  {"late", &FaultSet::lateMs, -1, 1, 600000},
    {"vanish", &FaultSet::vanishAfter, 0, 0, 100000}, {"cert-e0", &FaultSet::certE0Bytes, 3, 1, 64},
    {"drip", &FaultSet::dripMs, -1, 1, 10000},
};

const int kMaxStatusCode = 999999;

const CountedFault* countedFault(const std::string& name)
{
    for (const CountedFault& fault : kCountedFaults) {
        if (name == fault.name) return &fault;
    }
    return nullptr;
}

// The content of each part, in order, of a packet's content cut in `parts`.
std::vector<Bytes> cut(const Bytes& content, size_t parts)
{
    std::vector<Bytes> pieces;
    size_t at = 0;
    for (size_t i = 0; i < parts; ++i) {
        size_t size = (content.size() - at) / (parts - i);
        pieces.emplace_back(content.begin() + long(at), content.begin() + long(at + size));
        at += size;
    }
    return pieces;
}

// "METHOD:CODE[:MESSAGE]"
bool parseCertStatus(const std::string& text, CertStatusFault& fault)
{
    size_t first = text.find(':');
    if (first == std::string::npos) return false;
    size_t second = text.find(':', first + 1);
    fault.method = text.substr(0, first);
    std::string code = text.substr(first + 1, second == std::string::npos ? std::string::npos : second - first - 1);
    bool negative = !code.empty() && code[0] == '-';
    if (!parseCount(negative ? code.substr(1) : code, 0, kMaxStatusCode, fault.code)) return false;
    if (negative) fault.code = -fault.code;
    fault.message = second == std::string::npos ? "status " + code + " (cert-status fault)" : text.substr(second + 1);
    return fault.method == "*" || isCertMgrMethod(fault.method);
}

const uint8_t kNoise[] = {0x00, 0xFF, 0x5A, 0x13, 0x7E};
const Bytes kDropContent = {0xE0, 0xFF, 0xFF};

}  // namespace

const char* faultHelp()
{
    return "  refuse-envelope   answer wrapped requests with a refusal (flags 0xD4);\n"
           "                    plain requests are still answered\n"
           "  silent            answer nothing\n"
           "  noise[=N]         send N bytes (1..4096, default 4) that are not 0xA5 before\n"
           "                    the answer\n"
           "  split[=N]         send the answer's content in N packets (2..64, default 2),\n"
           "                    flags bit 5 on all but the last\n"
           "  bit7[=after|instead]\n"
           "                    add a packet flagged 0x80 after the answer (whose flags\n"
           "                    then announce it with bit 5), or send it instead of the\n"
           "                    answer\n"
           "  truncate[=N]      the last packet announces N more bytes (1..4096, default 4)\n"
           "                    than it has\n"
           "  late=MS           answer MS real milliseconds late (1..600000)\n"
           "  drip=MS           send the answer one byte at a time, MS real milliseconds\n"
           "                    apart (1..10000)\n"
           "  reject-settings   answer settings requests with a last byte 0x00 (not\n"
           "                    accepted) and keep the settings unchanged\n"
           "  cert-status=METHOD:CODE[:MESSAGE]\n"
           "                    the certificate-manager method METHOD (or * for every\n"
           "                    method) answers status_code CODE (-999999..999999) with\n"
           "                    status_mesg MESSAGE (default \"status CODE (cert-status\n"
           "                    fault)\")\n"
           "                    and changes nothing; repeatable, a named method wins over *.\n"
           "                    METHOD is one of deleteIndividualCA, deleteIndividualCert,\n"
           "                    readCertDefaults, uploadSignedCertFile, queryCAInfo,\n"
           "                    queryCertList, queryCAList, uploadNewCAFile, exportPubKey,\n"
           "                    generateNewCert\n"
           "  cert-no-envelope  certificate-manager answers carry the XML without the\n"
           "                    7 bytes E0 C0 03 00 01 00 E0 in front\n"
           "  cert-e0[=N]       insert N bytes 0xE0 (1..64, default 3) at evenly\n"
           "                    spread places into certificate-manager answers' XML\n"
           "  cert-silent       the certificate manager does not answer; other requests\n"
           "                    are answered\n"
           "  vanish[=N]        answer N requests (0..100000, default 0), then go away at\n"
           "                    the next one, as when unplugged: the device node hangs up,\n"
           "                    or the USB device fails every call with ENODEV\n";
}

bool addFault(FaultSet& faults, const std::string& faultText, std::string& error)
{
    size_t equals = faultText.find('=');
    std::string name = faultText.substr(0, equals);
    bool hasValue = equals != std::string::npos;
    std::string value = hasValue ? faultText.substr(equals + 1) : "";
    bool ok = true;
    std::string rule;  // what the value must be, for the message
    if (name == "refuse-envelope" && !hasValue)
        faults.refuseEnvelope = true;
    else if (name == "reject-settings" && !hasValue)
        faults.rejectSettings = true;
    else if (name == "silent" && !hasValue)
        faults.silent = true;
    else if (name == "cert-silent" && !hasValue)
        faults.certSilent = true;
    else if (name == "cert-no-envelope" && !hasValue)
        faults.certNoEnvelope = true;
    else if (name == "cert-status") {
        CertStatusFault fault;
        ok = hasValue && parseCertStatus(value, fault);
        if (ok)
            faults.certStatus.push_back(fault);
        else
            rule = "METHOD:CODE[:MESSAGE] with a certificate-manager method or *, CODE from -" +
                   std::to_string(kMaxStatusCode) + " to " + std::to_string(kMaxStatusCode);
    } else if (name == "bit7") {
        faults.dropPacket = DropPacket::After;
        if (value == "instead")
            faults.dropPacket = DropPacket::Instead;
        else
            ok = !hasValue || value == "after";
        rule = "after or instead";
    } else if (const CountedFault* counted = countedFault(name)) {
        if (hasValue) {
            ok = parseCount(value, counted->low, counted->high, faults.*counted->count);
        } else {
            ok = counted->defaultCount >= 0;
            if (ok) faults.*counted->count = counted->defaultCount;
        }
        rule = "a number from " + std::to_string(counted->low) + " to " + std::to_string(counted->high);
    } else {
        error = "unknown fault '" + faultText + "'";
        return false;
    }
    if (!ok) error = "bad value in fault '" + faultText + "'" + (rule.empty() ? "" : ": it takes " + rule);
    return ok;
}

const CertStatusFault* certStatusFor(const FaultSet& faults, const std::string& method)
{
    const CertStatusFault* any = nullptr;
    for (const CertStatusFault& fault : faults.certStatus) {
        if (fault.method == method) return &fault;
        if (fault.method == "*" && any == nullptr) any = &fault;
    }
    return any;
}

std::string insertE0(const std::string& xml, int count)
{
    std::string out;
    size_t at = 0;
    for (int i = 1; i <= count; ++i) {
        size_t place = xml.size() * size_t(i) / size_t(count + 1);
        out.append(xml, at, place - at);
        out += '\xE0';
        at = place;
    }
    return out + xml.substr(at);
}

Delivery deliver(const Bytes& answer, const FaultSet& faults)
{
    Delivery delivery;
    if (faults.silent) {
        delivery.applied.push_back("silent");
        return delivery;
    }
    if (answer.size() < kContentOffset) return delivery;  // nothing to send

    uint8_t flags = answer[kFlagsOffset];
    Bytes content(answer.begin() + kContentOffset, answer.end());
    std::vector<Bytes> packets;
    if (faults.splitParts >= 2 && content.size() >= size_t(faults.splitParts)) {
        std::vector<Bytes> pieces = cut(content, size_t(faults.splitParts));
        for (size_t i = 0; i < pieces.size(); ++i) {
            bool last = i + 1 == pieces.size();
            packets.push_back(makePacket(last ? flags : uint8_t(flags | kFlagMore), pieces[i]));
        }
        delivery.applied.push_back("split");
    } else {
        packets.push_back(answer);
    }

    if (faults.dropPacket == DropPacket::After) {
        packets.back()[kFlagsOffset] |= kFlagMore;
        packets.push_back(makePacket(kFlagDrop, kDropContent));
        delivery.applied.push_back("bit7=after");
    } else if (faults.dropPacket == DropPacket::Instead) {
        packets.assign(1, makePacket(kFlagDrop, kDropContent));
        delivery.applied.push_back("bit7=instead");
    }

    if (faults.truncateBy > 0) {
        Bytes& last = packets.back();
        unsigned announced = readBE16(&last[1]) + unsigned(faults.truncateBy);
        if (announced > 0xFFFF) announced = 0xFFFF;
        last[1] = uint8_t(announced >> 8);
        last[2] = uint8_t(announced);
        delivery.applied.push_back("truncate");
    }

    for (int i = 0; i < faults.noiseBytes; ++i) delivery.bytes.push_back(kNoise[size_t(i) % sizeof kNoise]);
    if (faults.noiseBytes > 0) delivery.applied.push_back("noise");
    for (const Bytes& packet : packets) delivery.bytes.insert(delivery.bytes.end(), packet.begin(), packet.end());

    if (faults.lateMs > 0) {
        delivery.delayMs = faults.lateMs;
        delivery.applied.push_back("late");
    }
    if (faults.dripMs > 0) {
        delivery.byteGapMs = faults.dripMs;
        delivery.applied.push_back("drip");
    }
    return delivery;
}

std::vector<TimedWrite> writesOf(const Delivery& delivery)
{
    if (delivery.bytes.empty()) return {};
    if (delivery.byteGapMs <= 0) return {{delivery.delayMs, delivery.bytes}};
    std::vector<TimedWrite> writes;
    int at = delivery.delayMs;
    for (uint8_t byte : delivery.bytes) {
        writes.push_back({at, {byte}});
        at += delivery.byteGapMs;
    }
    return writes;
}

}  // namespace corvelsim
