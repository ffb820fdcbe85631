#include "ctl/InvocationRules.h"

#include "ctl/OptionValues.h"
#include "ctl/WifiRules.h"

#include <utility>

namespace corvelctl {

namespace {

// Why a command runs on one printer only, or nullptr when it takes several.
const char* whyOnePrinterOnly(Command command)
{
    switch (command) {
    case Command::CertRequest: return "the file it writes belongs to one printer";
    case Command::CertInstall: return "the file it installs belongs to one printer";
    case Command::Provision: return "it applies the settings file of one printer";
    default: return nullptr;
    }
}

class InvocationBuilder {
public:
    explicit InvocationBuilder(RawCommandLine raw) : m_Raw(std::move(raw)) {}

    Invocation build()
    {
        m_Invocation.command = *m_Raw.command;
        readGlobalOptions();
        switch (m_Invocation.command) {
        case Command::Wifi: m_Invocation.wifi = readWifiSettings({m_Raw.values, m_Raw.flags}); break;
        case Command::Provision: readProvisionOptions(); break;
        case Command::CertRequest: readCertRequestOptions(); break;
        case Command::CertInstallCa:
        case Command::CertInstall: readCertificateFile(); break;
        default: break;
        }
        if (!m_Raw.operands.empty()) {
            const std::string& extra = m_Raw.operands.front();
            std::string hint;
            if (has("wait") && !value("wait") && decimal(extra, 0, 1 << 30)) {
                hint = " (a value of --wait is written --wait=SECONDS)";
            }
            throw usage("unexpected argument " + quoted(extra) + " after " + commandName(m_Invocation.command) + hint);
        }
        return m_Invocation;
    }

private:
    bool has(const char* name) const { return m_Raw.flags.count(name) != 0 || m_Raw.values.count(name) != 0; }

    std::optional<std::string> value(const char* name) const
    {
        const auto found = m_Raw.values.find(name);
        if (found == m_Raw.values.end()) return std::nullopt;
        return found->second;
    }

    std::string required(const char* name, const char* placeholder) const
    {
        const auto text = value(name);
        if (!text) {
            throw usage(std::string(commandName(m_Invocation.command)) + " needs --" + name + " " + placeholder);
        }
        return *text;
    }

    void readGlobalOptions()
    {
        GlobalOptions& global = m_Invocation.global;
        global.json = has("json");
        global.verbosity = m_Raw.verbosity;
        if (const auto timeout = value("timeout")) global.timeout = timeoutOption(*timeout);
        const std::vector<std::string> printers = repeated("printer");
        if (!printers.empty() && m_Invocation.command == Command::List) {
            throw usage("list shows every printer; --printer selects one for the other commands");
        }
        for (const std::string& printer : printers) global.printers.push_back(parsePrinterSelector(printer));
        // list shows every printer anyway.
        global.allPrinters = has("all") && m_Invocation.command != Command::List;
        if (global.allPrinters && !printers.empty()) {
            throw usage("give --all or --printer, not both: --all already means every printer attached");
        }
        if (global.severalPrinters()) {
            if (const char* why = whyOnePrinterOnly(m_Invocation.command)) {
                throw usage(std::string(commandName(m_Invocation.command)) + " takes one printer: " + why +
                            "; name it with --printer");
            }
        }
    }

    std::vector<std::string> repeated(const char* name) const
    {
        const auto found = m_Raw.repeatedValues.find(name);
        return found == m_Raw.repeatedValues.end() ? std::vector<std::string>{} : found->second;
    }

    void readProvisionOptions()
    {
        ProvisionOptions& provision = m_Invocation.provision;
        const auto file = value("settings");
        const auto dir = value("settings-dir");
        if (file && dir) throw usage("give --settings or --settings-dir, not both");
        if (file && file->empty()) throw usage("--settings needs a file name");
        if (dir && dir->empty()) throw usage("--settings-dir needs a folder name");
        if (file) provision.settingsFile = *file;
        if (dir) provision.settingsDir = *dir;
    }

    void readCertRequestOptions()
    {
        CertRequestOptions& request = m_Invocation.certRequest;
        request.outFile = required("out", "FILE");
        if (request.outFile.empty()) throw usage("--out needs a file name");
        request.force = has("force");
        CertSubject& subject = request.subject;
        subject.commonName = required("common-name", "CN");
        const struct {
            const char* name;
            std::string* field;
            std::size_t maximum;
        } fields[] = {{"common-name", &subject.commonName, 64},
                      {"org", &subject.organization, 64},
                      {"unit", &subject.unit, 64},
                      {"state", &subject.state, 128},
                      {"city", &subject.city, 128},
                      {"altname", &subject.altname, 255}};
        for (const auto& field : fields) {
            const auto text = value(field.name);
            if (!text) continue;
            checkLength(field.name, *text, field.maximum);
            checkNoControlCharacters(field.name, *text);
            *field.field = *text;
        }
        if (const auto country = value("country")) {
            const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
            if (country->size() != 2 || !isLetter((*country)[0]) || !isLetter((*country)[1])) {
                throw usage("--country " + quoted(*country) + " is not a two-letter country code (such as DE)");
            }
            subject.country = *country;
        }
    }

    void readCertificateFile()
    {
        if (m_Raw.operands.empty()) {
            throw usage(std::string(commandName(m_Invocation.command)) + " needs the certificate FILE");
        }
        m_Invocation.certFile = m_Raw.operands.front();
        m_Raw.operands.erase(m_Raw.operands.begin());
        if (m_Invocation.certFile.empty()) throw usage("the certificate FILE name is empty");
    }

    RawCommandLine m_Raw;
    Invocation m_Invocation;
};

}  // namespace

Invocation buildInvocation(RawCommandLine raw) { return InvocationBuilder(std::move(raw)).build(); }

}  // namespace corvelctl
