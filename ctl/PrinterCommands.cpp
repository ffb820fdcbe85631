// status, wifi, reset and the certificate commands, on the shared core: the
// configurator and the certificate manager client make the requests, the
// answer-driven exchanges carry them.
#include "ctl/PrinterCommands.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "cert/CertMgr.h"
#include "cert/CertMgrInventory.h"
#include "common/Console.h"
#include "ctl/AtomicFile.h"
#include "ctl/PrinterLink.h"
#include "ctl/WifiSettings.h"
#include "npa/FieldReading.h"
#include "npa/NPAChannel.h"
#include "npa/WirelessConfigurator.h"
#include "transport/Clock.h"

namespace corvelctl {

namespace {

using Outcome = npa::ExchangeReport::Outcome;

// A field read with the retry in plain packets after a refusal; a failure
// when no value came.
npa::FieldValue readOrFail(PrinterLink& link, NPAChannel& channel, npa::Key key, const char* what)
{
    npa::FieldValue field = npa::readField(channel, key, link.plain());
    if (field.outcome == Outcome::Refused && !link.plain()) {
        link.goPlain();
        field = npa::readField(channel, key, true);
    }
    if (field.outcome != Outcome::Answered || !field.found) {
        throw link.failure(what);
    }
    return field;
}

std::string addressText(const std::vector<uint8_t>& value)
{
    if (value.size() < 4 || (value[0] | value[1] | value[2] | value[3]) == 0) {
        return "";
    }
    return std::to_string(value[0]) + "." + std::to_string(value[1]) + "." + std::to_string(value[2]) + "." +
           std::to_string(value[3]);
}

std::optional<std::string> nonEmpty(const std::string& text)
{
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

// The core's own trace lines stay out of corvelctl's output.
class SilentConsole : public Console {
public:
    void trace(std::string_view) override {}
    void user(std::string_view) override {}
};

// Every printer command runs with the core silenced.
struct QuietCore {
    SilentConsole console;
    Seam<Console>::Override installed{console};
};

// The certificate manager client of the run, names escaped.
std::unique_ptr<CertMgr> certificateClient(PrinterLink& link)
{
    std::unique_ptr<CertMgr> client = CertMgr::create(link.path());
    client->setEscapeNames(true);
    client->setWholeLists(true);
    client->setLargeFiles(true);
    return client;
}

// A certificate call's failure: the printer's own "no" (exit 1, with its
// status) or the exchange's.
Failure callFailure(PrinterLink& link, const CertMgr& client, const std::string& what)
{
    if (link.last().outcome == Outcome::None) {
        // The client sent nothing: the file's request does not fit its buffer.
        return {ExitStatus::DataError,
                "the certificate file does not fit one certificate-manager request (" + what + ")"};
    }
    if (link.last().outcome == Outcome::Answered && client.lastStatus().code != 0) {
        const CertMgr::CallStatus& status = client.lastStatus();
        return {ExitStatus::Refused, "the printer at " + link.path() + " refused " + what + ": status " +
                                         std::to_string(status.code) +
                                         (status.message.empty() ? "" : " (" + status.message + ")")};
    }
    if (link.last().outcome == Outcome::Answered) {
        return {ExitStatus::Protocol, "the printer at " + link.path() + " gave no usable answer (" + what + ")"};
    }
    return link.failure(what);
}

Report printerReport(const std::string& path) { return Report().addText("printer", path); }

}  // namespace

Report runStatus(const Invocation& invocation, const std::string& printerPath)
{
    QuietCore quiet;
    PrinterLink link(invocation, printerPath);
    NPAChannel channel(printerPath);

    const std::string ssid = npa::textOf(readOrFail(link, channel, npa::kSSID, "reading the SSID").value);
    const std::vector<uint8_t> state = readOrFail(link, channel, npa::kConnectionState, "reading the state").value;
    const std::string address = addressText(readOrFail(link, channel, npa::kIPv4Address, "reading the address").value);
    const std::vector<uint8_t> auth = readOrFail(link, channel, npa::kAuthStatus, "reading the 802.1x status").value;
    const std::string organization =
        npa::textOf(readOrFail(link, channel, npa::kCertOrganization, "reading the certificate").value);
    const std::string commonName =
        npa::textOf(readOrFail(link, channel, npa::kCertCommonName, "reading the certificate").value);

    const bool connected = !state.empty() && state[0] == 0;
    Report report = printerReport(printerPath);
    report.addOptionalText("ssid", nonEmpty(ssid));
    report.addBool("connected", connected).humanText(connected ? "yes" : "no");
    if (state.empty()) {
        report.addNull("connection_state");
    } else {
        report.addInteger("connection_state", state[0]);
    }
    report.addOptionalText("ipv4", nonEmpty(address));
    if (auth.empty()) {
        report.addNull("auth_8021x");
    } else {
        report
            .addObject("auth_8021x",
                       Report().addInteger("status", auth[0]).addText("name", npa::authStatusName(auth[0])))
            .humanText(std::to_string(auth[0]) + " (" + npa::authStatusName(auth[0]) + ")");
    }
    report.addObject("certificate", Report()
                                        .addOptionalText("organization", nonEmpty(organization))
                                        .addOptionalText("common_name", nonEmpty(commonName)));
    return report;
}

namespace {

// Polls until the printer has joined and has an address, within `wait`.
std::string waitForAddress(PrinterLink& link, NPAChannel& channel, std::chrono::seconds wait)
{
    Clock& clock = Seam<Clock>::get();
    const long long end = clock.monotonicMs() + wait.count() * 1000;
    while (true) {
        const std::vector<uint8_t> state = readOrFail(link, channel, npa::kConnectionState, "waiting to join").value;
        if (!state.empty() && state[0] == 0) {
            const std::string address =
                addressText(readOrFail(link, channel, npa::kIPv4Address, "reading the address").value);
            if (!address.empty()) return address;
        }
        if (clock.monotonicMs() >= end) {
            throw Failure(ExitStatus::TemporaryFailure, "the printer at " + link.path() +
                                                            " took the settings but had not joined the network "
                                                            "with an address within " +
                                                            std::to_string(wait.count()) + " s");
        }
        clock.sleep(1);
    }
}

void wipe(std::string& text)
{
    volatile char* bytes = text.data();
    for (size_t i = 0; i < text.size(); ++i) bytes[i] = 0;
    text.clear();
}

}  // namespace

Report runWifi(const Invocation& invocation, const std::string& printerPath, const Secret& secret)
{
    QuietCore quiet;
    PrinterLink link(invocation, printerPath);
    ConfigDetails config = wifiSettings(invocation.wifi, secret, printerPath);
    CertMgrInventory certificates;
    WirelessConfigurator configurator(config, certificates);

    int result = configurator.advancedConfig();
    const bool refusedWrapped = result == -1 && link.last().outcome == Outcome::Refused;
    if (refusedWrapped) {
        link.goPlain();
        configurator.setPassThrough(false);
        result = configurator.advancedConfig();
    }
    for (std::string* text :
         {&config.psk, &config.pwd8021x, &config.wepKey[0], &config.wepKey[1], &config.wepKey[2], &config.wepKey[3]}) {
        wipe(*text);
    }
    if (result == -1) {
        throw link.failure("sending the settings");
    }
    if (result != 0) {
        throw Failure(ExitStatus::Refused, "the printer at " + printerPath + " did not accept the settings");
    }

    Report report = printerReport(printerPath);
    report.addText("ssid", invocation.wifi.ssid)
        .addText("security", securityName(invocation.wifi.security))
        .addBool("accepted", true)
        .addBool("plain_retry", refusedWrapped);
    if (invocation.wifi.wait) {
        NPAChannel channel(printerPath);
        report.addText("ipv4", waitForAddress(link, channel, *invocation.wifi.wait));
    }
    return report;
}

Report runReset(const Invocation& invocation, const std::string& printerPath)
{
    QuietCore quiet;
    PrinterLink link(invocation, printerPath);
    NPAChannel channel(printerPath);
    const std::vector<uint8_t> plain = npa::resetRequest();
    std::vector<uint8_t> request = npa::wrapPassThrough(plain);
    int result = channel.sendSettings(request.data(), static_cast<int32_t>(request.size()));
    if (result == -1 && link.last().outcome == Outcome::Refused) {
        link.goPlain();
        result = channel.sendSettings(plain.data(), static_cast<int32_t>(plain.size()));
    }
    if (result == -1) throw link.failure("resetting");
    if (result != 0) {
        throw Failure(ExitStatus::Refused, "the printer at " + printerPath + " did not acknowledge the reset");
    }
    return printerReport(printerPath).addBool("reset", true);
}

Report runCertDefaults(const Invocation& invocation, const std::string& printerPath)
{
    QuietCore quiet;
    PrinterLink link(invocation, printerPath);
    const std::unique_ptr<CertMgr> client = certificateClient(link);
    std::string org, unit, country, state, city, common, altname;
    if (client->getCertRequestDefaults(org, unit, country, state, city, common, altname) != 0) {
        throw callFailure(link, *client, "reading the certificate defaults");
    }
    return printerReport(printerPath)
        .addText("organization", org)
        .addText("unit", unit)
        .addText("state", state)
        .addText("country", country)
        .addText("city", city)
        .addText("altname", altname)
        .addText("common_name", common);
}

Report runCertRequest(const Invocation& invocation, const std::string& printerPath)
{
    QuietCore quiet;
    const CertRequestOptions& options = invocation.certRequest;
    PrinterLink link(invocation, printerPath);
    const std::unique_ptr<CertMgr> client = certificateClient(link);
    const CertSubject& s = options.subject;
    if (client->createCertRequest(s.organization, s.unit, s.country, s.state, s.city, s.commonName, s.altname) != 0) {
        throw callFailure(link, *client, "generating the key and signing request");
    }
    std::vector<uint8_t> pem;
    if (client->exportCertRequest(pem) != 0) {
        throw callFailure(link, *client, "exporting the signing request");
    }
    if (pem.empty()) {
        throw Failure(ExitStatus::Protocol, "the printer at " + printerPath + " sent no signing request; " +
                                                options.outFile + " was not written");
    }
    writeFileAtomically(options.outFile, std::string_view(reinterpret_cast<const char*>(pem.data()), pem.size()),
                        options.force);
    return printerReport(printerPath)
        .addText("file", options.outFile)
        .addInteger("bytes", static_cast<long long>(pem.size()));
}

namespace {

// The most a certificate file may hold: its upload goes in one packet.
constexpr long long kLargestCertificateFile = 48000;

// The certificate file must be there, readable and a PEM certificate that
// fits one upload before anything is sent.
void checkReadable(const std::string& path)
{
    struct stat status {};
    if (::access(path.c_str(), R_OK) != 0 || ::stat(path.c_str(), &status) != 0) {
        const int error = errno;
        throw Failure(ExitStatus::NoInput, "cannot read " + path + ": " + std::strerror(error));
    }
    if (!S_ISREG(status.st_mode)) {
        throw Failure(ExitStatus::NoInput, path + " is not a regular file");
    }
    if (status.st_size > kLargestCertificateFile) {
        throw Failure(ExitStatus::DataError, path + " has " + std::to_string(status.st_size) +
                                                 " bytes; a certificate file may have at most 48000");
    }
    std::string commonName, caName;
    CertMgr::readPemSubject(path, commonName, caName);
    if (commonName.empty() && caName.empty()) {
        throw Failure(ExitStatus::DataError, path + " holds no PEM certificate");
    }
}

}  // namespace

Report runCertInstallCa(const Invocation& invocation, const std::string& printerPath)
{
    QuietCore quiet;
    checkReadable(invocation.certFile);
    PrinterLink link(invocation, printerPath);
    const std::unique_ptr<CertMgr> client = certificateClient(link);
    // The client replaces a CA of the same name.
    if (client->installCACert(invocation.certFile) != 0) {
        throw callFailure(link, *client, "installing the CA certificate");
    }
    return printerReport(printerPath)
        .addText("file", invocation.certFile)
        .addBool("installed", true)
        .addBool("replaced", client->replacedCA());
}

Report runCertInstall(const Invocation& invocation, const std::string& printerPath)
{
    QuietCore quiet;
    checkReadable(invocation.certFile);
    PrinterLink link(invocation, printerPath);
    const std::unique_ptr<CertMgr> client = certificateClient(link);
    if (client->installSignedCert(invocation.certFile) != 0) {
        throw callFailure(link, *client, "installing the certificate");
    }
    return printerReport(printerPath).addText("file", invocation.certFile).addBool("installed", true);
}

}  // namespace corvelctl
