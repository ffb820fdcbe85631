// The certificate commands: the shared certificate-manager client with
// names escaped, lists read whole and large files, over answer-driven
// exchanges.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>

#include "cert/CertMgr.h"
#include "ctl/AtomicFile.h"
#include "ctl/CommandSupport.h"
#include "ctl/PrinterCommands.h"
#include "ctl/PrinterLink.h"

namespace corvelctl {

namespace {

using Outcome = npa::ExchangeReport::Outcome;

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

}  // namespace

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

namespace {

// The commands that upload a certificate file: checked before anything is
// sent, uploaded by `upload`, reported with what `extra` adds.
Report installFile(const Invocation& invocation, const std::string& printerPath, const char* what,
                   const std::function<int(CertMgr&)>& upload,
                   const std::function<void(Report&, const CertMgr&)>& extra)
{
    QuietCore quiet;
    checkReadable(invocation.certFile);
    PrinterLink link(invocation, printerPath);
    const std::unique_ptr<CertMgr> client = certificateClient(link);
    if (upload(*client) != 0) {
        throw callFailure(link, *client, what);
    }
    Report report = printerReport(printerPath).addText("file", invocation.certFile).addBool("installed", true);
    extra(report, *client);
    return report;
}

}  // namespace

Report runCertInstallCa(const Invocation& invocation, const std::string& printerPath)
{
    // The client replaces a CA of the same name.
    return installFile(
        invocation, printerPath, "installing the CA certificate",
        [&](CertMgr& client) { return client.installCACert(invocation.certFile); },
        [](Report& report, const CertMgr& client) { report.addBool("replaced", client.replacedCA()); });
}

Report runCertInstall(const Invocation& invocation, const std::string& printerPath)
{
    return installFile(
        invocation, printerPath, "installing the certificate",
        [&](CertMgr& client) { return client.installSignedCert(invocation.certFile); }, [](Report&, const CertMgr&) {});
}

}  // namespace corvelctl
