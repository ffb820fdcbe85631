// status, wifi and reset: the fields read and the settings sent by the
// shared configurator, over answer-driven exchanges.
#include <optional>

#include "cert/CertMgrInventory.h"
#include "ctl/CommandSupport.h"
#include "ctl/PrinterCommands.h"
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
    // A sequence the printer refused in the envelope (the 802.1x one goes on
    // to read the status after a refusal) is sent again plain.
    const bool refusedWrapped = result == -1 && link.refusalSeen();
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

}  // namespace corvelctl
