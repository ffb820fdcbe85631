#include "ctl/CommandLine.h"

#include "ctl/Failure.h"
#include "ctl/HelpText.h"

#include <map>
#include <set>
#include <string_view>

namespace corvelctl {

namespace {

enum class Scope { Global, Wifi, CertRequest };
enum class Takes { Nothing, Value, AttachedValueOnly };

struct OptionSpec {
    const char* name;  // without "--"
    char shortName;    // 0 when none
    Takes takes;
    Scope scope;
};

const OptionSpec kOptions[] = {
    {"printer", 0, Takes::Value, Scope::Global},
    {"json", 'j', Takes::Nothing, Scope::Global},
    {"verbose", 'v', Takes::Nothing, Scope::Global},
    {"timeout", 0, Takes::Value, Scope::Global},
    {"help", 'h', Takes::Nothing, Scope::Global},
    {"version", 0, Takes::Nothing, Scope::Global},
    {"ssid", 0, Takes::Value, Scope::Wifi},
    {"security", 0, Takes::Value, Scope::Wifi},
    {"channel", 0, Takes::Value, Scope::Wifi},
    {"mode", 0, Takes::Value, Scope::Wifi},
    {"encryption", 0, Takes::Value, Scope::Wifi},
    {"wep-tx-key", 0, Takes::Value, Scope::Wifi},
    {"eap", 0, Takes::Value, Scope::Wifi},
    {"inner", 0, Takes::Value, Scope::Wifi},
    {"user", 0, Takes::Value, Scope::Wifi},
    {"passphrase-file", 0, Takes::Value, Scope::Wifi},
    {"passphrase-stdin", 0, Takes::Nothing, Scope::Wifi},
    {"allow-shared-file", 0, Takes::Nothing, Scope::Wifi},
    {"wait", 0, Takes::AttachedValueOnly, Scope::Wifi},
    {"out", 0, Takes::Value, Scope::CertRequest},
    {"force", 0, Takes::Nothing, Scope::CertRequest},
    {"common-name", 0, Takes::Value, Scope::CertRequest},
    {"org", 0, Takes::Value, Scope::CertRequest},
    {"unit", 0, Takes::Value, Scope::CertRequest},
    {"state", 0, Takes::Value, Scope::CertRequest},
    {"country", 0, Takes::Value, Scope::CertRequest},
    {"city", 0, Takes::Value, Scope::CertRequest},
    {"altname", 0, Takes::Value, Scope::CertRequest},
};

const char kCommandList[] = "list, status, wifi, cert, reset";
const char kCertSubcommandList[] = "defaults, request, install-ca, install";

template <typename Value>
struct Named {
    const char* name;
    Value value;
};

const Named<Security> kSecurities[] = {{"none", Security::None},
                                       {"wep-open", Security::WepOpen},
                                       {"wep-shared", Security::WepShared},
                                       {"wpa-wpa2-psk", Security::WpaWpa2Psk},
                                       {"wpa2-psk", Security::Wpa2Psk},
                                       {"802.1x", Security::Ieee8021x}};
const Named<Encryption> kEncryptions[] = {
    {"aes", Encryption::Aes}, {"tkip", Encryption::Tkip}, {"wep-dynamic", Encryption::WepDynamic}};
const Named<WirelessMode> kModes[] = {{"managed", WirelessMode::Managed}, {"ad-hoc", WirelessMode::AdHoc}};
const Named<EapMethod> kEapMethods[] = {{"md5", EapMethod::Md5},   {"mschapv2", EapMethod::Mschapv2},
                                        {"leap", EapMethod::Leap}, {"peap", EapMethod::Peap},
                                        {"tls", EapMethod::Tls},   {"ttls", EapMethod::Ttls}};
const Named<InnerAuthentication> kInnerMethods[] = {{"chap", InnerAuthentication::Chap},
                                                    {"mschap", InnerAuthentication::Mschap},
                                                    {"mschapv2", InnerAuthentication::Mschapv2},
                                                    {"pap", InnerAuthentication::Pap}};
const Named<Command> kCommands[] = {
    {"list", Command::List}, {"status", Command::Status}, {"wifi", Command::Wifi}, {"reset", Command::Reset}};
const Named<Command> kCertSubcommands[] = {{"defaults", Command::CertDefaults},
                                           {"request", Command::CertRequest},
                                           {"install-ca", Command::CertInstallCa},
                                           {"install", Command::CertInstall}};

template <typename Value, std::size_t N>
std::string namesOf(const Named<Value> (&table)[N], std::size_t count = N)
{
    std::string names;
    for (std::size_t i = 0; i < count; ++i) names += (i == 0 ? "" : ", ") + std::string(table[i].name);
    return names;
}

template <typename Value, std::size_t N>
const Named<Value>* find(const Named<Value> (&table)[N], std::string_view name)
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

Failure usage(const std::string& message) { return Failure(ExitStatus::Usage, message); }

std::string quoted(std::string_view text) { return "\"" + std::string(text) + "\""; }

const OptionSpec* findLong(std::string_view name)
{
    for (const OptionSpec& option : kOptions) {
        if (name == option.name) return &option;
    }
    return nullptr;
}

const OptionSpec* findShort(char name)
{
    for (const OptionSpec& option : kOptions) {
        if (option.shortName != 0 && option.shortName == name) return &option;
    }
    return nullptr;
}

bool isShortCluster(std::string_view token) { return token.size() > 1 && token[0] == '-' && token[1] != '-'; }

// The scope the options of `command` belong to.
Scope scopeOf(Command command)
{
    if (command == Command::Wifi) return Scope::Wifi;
    if (command == Command::CertRequest) return Scope::CertRequest;
    return Scope::Global;
}

const char* scopeCommand(Scope scope) { return scope == Scope::Wifi ? "wifi" : "cert request"; }

// What the tokens say before their values are read.
struct RawCommandLine {
    std::optional<Command> command;
    bool certWithoutSubcommand = false;
    std::vector<std::string> operands;  // after the command words
    std::map<std::string, std::string> values;
    std::set<std::string> flags;
    int verbosity = 0;
};

class TokenReader {
public:
    TokenReader(int argc, const char* const* argv) : m_Tokens(argv + 1, argv + (argc > 0 ? argc : 1)) {}

    RawCommandLine read()
    {
        bool optionsEnded = false;
        for (m_Index = 0; m_Index < m_Tokens.size(); ++m_Index) {
            const std::string& token = m_Tokens[m_Index];
            if (optionsEnded) {
                operand(token);
            } else if (token == "--") {
                optionsEnded = true;
            } else if (token.rfind("--", 0) == 0) {
                longOption(token);
            } else if (isShortCluster(token)) {
                shortOptions(token);
            } else {
                operand(token);
            }
        }
        if (m_Raw.certWithoutSubcommand) {
            throw usage(std::string("cert needs a subcommand: ") + kCertSubcommandList);
        }
        if (!m_Raw.command) throw usage(std::string("no command given; the commands are ") + kCommandList);
        return m_Raw;
    }

private:
    void operand(const std::string& token)
    {
        if (m_Raw.certWithoutSubcommand) {
            const auto* sub = find(kCertSubcommands, token);
            if (sub == nullptr) {
                throw usage("unknown cert subcommand " + quoted(token) + "; the subcommands are " +
                            kCertSubcommandList);
            }
            m_Raw.command = sub->value;
            m_Raw.certWithoutSubcommand = false;
            return;
        }
        if (m_Raw.command) {
            m_Raw.operands.push_back(token);
            return;
        }
        if (token == "cert") {
            m_Raw.certWithoutSubcommand = true;
            return;
        }
        const auto* command = find(kCommands, token);
        if (command == nullptr) {
            throw usage("unknown command " + quoted(token) + "; the commands are " + kCommandList);
        }
        m_Raw.command = command->value;
    }

    void checkScope(const OptionSpec& option, const std::string& shown)
    {
        if (option.scope == Scope::Global) return;
        if (!m_Raw.command) {
            throw usage(shown + " is an option of " + scopeCommand(option.scope) + "; give it after the command");
        }
        if (scopeOf(*m_Raw.command) != option.scope) {
            throw usage(shown + " is not an option of " + commandName(*m_Raw.command) + " (it belongs to " +
                        scopeCommand(option.scope) + ")");
        }
    }

    void setFlag(const OptionSpec& option, const std::string& shown)
    {
        if (option.shortName == 'v') {
            if (++m_Raw.verbosity > 2) throw usage("-v given more than twice; -vv is the most trace there is");
            return;
        }
        if (option.shortName == 'h') return;  // handled before reading
        if (!m_Raw.flags.insert(option.name).second) throw usage(shown + " given twice");
    }

    void setValue(const OptionSpec& option, std::string value)
    {
        if (!m_Raw.values.emplace(option.name, std::move(value)).second) {
            throw usage("--" + std::string(option.name) + " given twice");
        }
    }

    void longOption(const std::string& token)
    {
        const std::size_t equals = token.find('=');
        const std::string name = token.substr(2, equals == std::string::npos ? std::string::npos : equals - 2);
        const OptionSpec* option = findLong(name);
        const std::string shown = "--" + name;
        if (option == nullptr) throw usage("unknown option " + shown + "; corvelctl --help lists the options");
        checkScope(*option, shown);
        const bool attached = equals != std::string::npos;
        switch (option->takes) {
        case Takes::Nothing:
            if (attached) throw usage(shown + " takes no value");
            setFlag(*option, shown);
            return;
        case Takes::AttachedValueOnly:
            if (attached && m_Raw.flags.count(option->name) == 0) {
                setValue(*option, token.substr(equals + 1));
            } else if (attached || !m_Raw.flags.insert(option->name).second || m_Raw.values.count(option->name) != 0) {
                throw usage(shown + " given twice");
            }
            return;
        case Takes::Value:
            if (attached) {
                setValue(*option, token.substr(equals + 1));
                return;
            }
            if (m_Index + 1 >= m_Tokens.size()) throw usage(shown + " needs a value");
            const std::string& next = m_Tokens[m_Index + 1];
            // A forgotten value must not swallow the next option.
            if (next.size() > 1 && next[0] == '-') {
                throw usage(shown + " needs a value (one that starts with '-' is written " + shown + "=VALUE)");
            }
            ++m_Index;
            setValue(*option, next);
            return;
        }
    }

    void shortOptions(const std::string& token)
    {
        for (std::size_t i = 1; i < token.size(); ++i) {
            const OptionSpec* option = findShort(token[i]);
            const std::string shown = std::string("-") + token[i];
            if (option == nullptr) {
                throw usage("unknown option " + shown + (token.size() > 2 ? " in " + token : std::string()) +
                            "; the short options are -v, -j and -h");
            }
            setFlag(*option, option->shortName == 'j' ? "--json" : shown);
        }
    }

    std::vector<std::string> m_Tokens;
    std::size_t m_Index = 0;
    RawCommandLine m_Raw;
};

// ---- values ----

std::optional<int> decimal(std::string_view text, int minimum, int maximum)
{
    if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string_view::npos) {
        return std::nullopt;
    }
    const int value = std::stoi(std::string(text));
    if (value < minimum || value > maximum) return std::nullopt;
    return value;
}

int integerOption(const std::string& name, const std::string& text, int minimum, int maximum)
{
    const auto value = decimal(text, minimum, maximum);
    if (!value) {
        throw usage("--" + name + " " + quoted(text) + " is not a whole number from " + std::to_string(minimum) +
                    " to " + std::to_string(maximum));
    }
    return *value;
}

// Seconds with up to three decimals, such as "5" or "2.5", 1-600.
std::chrono::milliseconds timeoutOption(const std::string& text)
{
    const Failure bad =
        usage("--timeout " + quoted(text) + " is not a number of seconds from 1 to 600 (such as 10 or 2.5)");
    const std::size_t point = text.find('.');
    const std::string whole = text.substr(0, point);
    const std::string fraction = point == std::string::npos ? "" : text.substr(point + 1);
    if (point != std::string::npos && (fraction.empty() || fraction.size() > 3)) throw bad;
    if (fraction.find_first_not_of("0123456789") != std::string::npos) throw bad;
    const auto seconds = decimal(whole, 0, 600);
    if (!seconds) throw bad;
    const long long milliseconds = *seconds * 1000LL + std::stoi((fraction + "000").substr(0, 3));
    if (milliseconds < 1000 || milliseconds > 600000) throw bad;
    return std::chrono::milliseconds(milliseconds);
}

template <typename Value, std::size_t N>
Value namedOption(const std::string& name, const std::string& text, const Named<Value> (&table)[N])
{
    const auto* entry = find(table, text);
    if (entry == nullptr) throw usage("--" + name + " " + quoted(text) + " is not one of " + namesOf(table));
    return entry->value;
}

Security securityOption(const std::string& text)
{
    if (text == "wpa-psk") {
        throw usage("--security wpa-psk: the printer has no WPA-only mode; use wpa-wpa2-psk (WPA or WPA2) or "
                    "wpa2-psk");
    }
    if (text == "wpa-enterprise" || text == "wpa2-enterprise") {
        throw usage("--security " + text + ": the printer's enterprise authentication is --security 802.1x");
    }
    return namedOption("security", text, kSecurities);
}

void checkLength(const std::string& name, const std::string& text, std::size_t maximum)
{
    if (text.empty() || text.size() > maximum) {
        throw usage("--" + name + " must have 1-" + std::to_string(maximum) + " bytes; " + quoted(text) + " has " +
                    std::to_string(text.size()));
    }
}

void checkNoControlCharacters(const std::string& name, const std::string& text)
{
    for (const char c : text) {
        if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
            throw usage("--" + name + " holds a control character");
        }
    }
}

std::vector<EapMethod> eapOption(const std::string& text)
{
    std::vector<EapMethod> methods;
    std::size_t start = 0;
    for (;;) {
        const std::size_t comma = text.find(',', start);
        const std::string item = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        if (item.empty()) throw usage("--eap " + quoted(text) + " has an empty item; write md5,tls for example");
        const EapMethod method = namedOption("eap", item, kEapMethods);
        for (const EapMethod seen : methods) {
            if (seen == method) throw usage("--eap names " + item + " twice");
        }
        methods.push_back(method);
        if (comma == std::string::npos) return methods;
        start = comma + 1;
    }
}

// ---- commands ----

class InvocationBuilder {
public:
    explicit InvocationBuilder(RawCommandLine raw) : m_Raw(std::move(raw)) {}

    Invocation build()
    {
        m_Invocation.command = *m_Raw.command;
        readGlobalOptions();
        switch (m_Invocation.command) {
        case Command::Wifi: readWifiOptions(); break;
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
        if (const auto printer = value("printer")) {
            if (m_Invocation.command == Command::List) {
                throw usage("list shows every printer; --printer selects one for the other commands");
            }
            global.printer = parsePrinterSelector(*printer);
        }
    }

    void refuseUnless(bool applies, const char* name, const std::string& appliesTo)
    {
        if (has(name) && !applies) throw usage(std::string("--") + name + " applies to " + appliesTo + " only");
    }

    void readWifiOptions()
    {
        WifiOptions& wifi = m_Invocation.wifi;
        wifi.ssid = required("ssid", "SSID");
        checkLength("ssid", wifi.ssid, 32);
        const auto security = value("security");
        if (!security) {
            throw usage(std::string("wifi needs --security, one of ") + namesOf(kSecurities));
        }
        wifi.security = securityOption(*security);
        if (const auto channel = value("channel")) wifi.channel = integerOption("channel", *channel, 1, 11);
        if (const auto mode = value("mode")) wifi.mode = namedOption("mode", *mode, kModes);
        readEncryption();
        readWep();
        read8021x();
        readSecretSource();
        if (has("wait")) {
            const auto seconds = value("wait");
            if (seconds && seconds->empty()) throw usage("--wait= needs a number of seconds, 1-3600");
            wifi.wait = std::chrono::seconds(seconds ? integerOption("wait", *seconds, 1, 3600) : 60);
        }
    }

    void readEncryption()
    {
        WifiOptions& wifi = m_Invocation.wifi;
        const auto text = value("encryption");
        const bool isWpa = wifi.security == Security::WpaWpa2Psk || wifi.security == Security::Wpa2Psk;
        if (!isWpa && wifi.security != Security::Ieee8021x) {
            if (text) {
                throw usage(std::string("--encryption does not apply to --security ") + securityName(wifi.security) +
                            (wifi.security == Security::None ? "" : " (WEP is implied)"));
            }
            return;
        }
        wifi.encryption = Encryption::Aes;
        if (!text) return;
        if (isWpa && *text == "wep-dynamic") {
            throw usage("--encryption wep-dynamic applies to --security 802.1x; WPA takes tkip or aes");
        }
        wifi.encryption = namedOption("encryption", *text, kEncryptions);
    }

    void readWep()
    {
        WifiOptions& wifi = m_Invocation.wifi;
        const bool isWep = wifi.security == Security::WepOpen || wifi.security == Security::WepShared;
        refuseUnless(isWep, "wep-tx-key", "--security wep-open and wep-shared");
        if (const auto key = value("wep-tx-key")) wifi.wepTransmitKey = integerOption("wep-tx-key", *key, 1, 4);
    }

    void read8021x()
    {
        WifiOptions& wifi = m_Invocation.wifi;
        const bool is8021x = wifi.security == Security::Ieee8021x;
        for (const char* name : {"eap", "inner", "user"}) refuseUnless(is8021x, name, "--security 802.1x");
        if (!is8021x) return;
        if (wifi.mode == WirelessMode::AdHoc) {
            throw usage("--security 802.1x needs an access point; it cannot be used with --mode ad-hoc");
        }
        wifi.eap = eapOption(required("eap", "LIST (md5, mschapv2, leap, peap, tls, ttls, comma-separated)"));
        wifi.user = required("user", "NAME");
        checkLength("user", wifi.user, 31);
        if (const auto inner = value("inner")) {
            wifi.inner = namedOption("inner", *inner, kInnerMethods);
            bool tunnels = false;
            for (const EapMethod method : wifi.eap)
                tunnels = tunnels || method == EapMethod::Peap || method == EapMethod::Ttls;
            if (!tunnels) throw usage("--inner applies to peap and ttls, and --eap names neither");
        }
    }

    void readSecretSource()
    {
        WifiOptions& wifi = m_Invocation.wifi;
        const auto file = value("passphrase-file");
        const bool fromStdin = has("passphrase-stdin");
        refuseUnless(file.has_value(), "allow-shared-file", "--passphrase-file");
        if (wifi.security == Security::None) {
            if (file || fromStdin) {
                throw usage(std::string("--security none takes no secret; leave out ") +
                            (file ? "--passphrase-file" : "--passphrase-stdin"));
            }
            wifi.secretSource = SecretSource::NotNeeded;
            return;
        }
        if (file && fromStdin) throw usage("give --passphrase-file or --passphrase-stdin, not both");
        if (file && file->empty()) throw usage("--passphrase-file needs a file name");
        wifi.secretSource = file ? SecretSource::File : fromStdin ? SecretSource::Stdin : SecretSource::Prompt;
        if (file) wifi.passphraseFile = *file;
        wifi.allowSharedFile = has("allow-shared-file");
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

// ---- help and version, which win over any mistake ----

bool isHelpToken(std::string_view token)
{
    if (token == "--help") return true;
    return isShortCluster(token) && token.find('h') != std::string_view::npos &&
           token.find_first_not_of("vjh", 1) == std::string_view::npos;
}

// The tokens before "--".
std::vector<std::string_view> optionTokens(int argc, const char* const* argv)
{
    std::vector<std::string_view> tokens;
    for (int i = 1; i < argc; ++i) {
        if (std::string_view(argv[i]) == "--") break;
        tokens.emplace_back(argv[i]);
    }
    return tokens;
}

// The help for the command words found among `tokens` (skipping options and
// their separate values), or for the program.
std::string helpFor(const std::vector<std::string_view>& tokens)
{
    std::vector<std::string_view> words;
    for (std::size_t i = 0; i < tokens.size() && words.size() < 2; ++i) {
        const std::string_view token = tokens[i];
        if (token.rfind("--", 0) == 0) {
            const OptionSpec* option = findLong(token.substr(2, token.find('=') - 2));
            const bool separateValue =
                option != nullptr && option->takes == Takes::Value && token.find('=') == std::string_view::npos;
            if (separateValue) ++i;
        } else if (!isShortCluster(token)) {
            words.push_back(token);
        }
    }
    if (words.empty()) return programHelp();
    if (words[0] == "cert") {
        if (words.size() < 2) return certHelp();
        const auto* sub = find(kCertSubcommands, words[1]);
        return sub != nullptr ? commandHelp(sub->value) : certHelp();
    }
    const auto* command = find(kCommands, words[0]);
    return command != nullptr ? commandHelp(command->value) : programHelp();
}

}  // namespace

ParsedCommandLine parseCommandLine(int argc, const char* const* argv)
{
    ParsedCommandLine parsed;
    const std::vector<std::string_view> tokens = optionTokens(argc, argv);
    for (const std::string_view token : tokens) {
        if (isHelpToken(token)) {
            parsed.action = ParsedCommandLine::Action::ShowHelp;
            parsed.text = helpFor(tokens);
            return parsed;
        }
    }
    for (const std::string_view token : tokens) {
        if (token == "--version") {
            parsed.action = ParsedCommandLine::Action::ShowVersion;
            parsed.text = versionText();
            return parsed;
        }
    }
    parsed.invocation = InvocationBuilder(TokenReader(argc, argv).read()).build();
    return parsed;
}

bool asksForJson(int argc, const char* const* argv)
{
    for (const std::string_view token : optionTokens(argc, argv)) {
        if (token == "--json") return true;
        if (isShortCluster(token) && token.find('j') != std::string_view::npos &&
            token.find_first_not_of("vjh", 1) == std::string_view::npos) {
            return true;
        }
    }
    return false;
}

const char* securityName(Security security) { return nameOf(kSecurities, security); }
const char* encryptionName(Encryption encryption) { return nameOf(kEncryptions, encryption); }
const char* eapMethodName(EapMethod method) { return nameOf(kEapMethods, method); }
const char* innerAuthenticationName(InnerAuthentication inner) { return nameOf(kInnerMethods, inner); }

const char* commandName(Command command)
{
    switch (command) {
    case Command::List: return "list";
    case Command::Status: return "status";
    case Command::Wifi: return "wifi";
    case Command::CertDefaults: return "cert defaults";
    case Command::CertRequest: return "cert request";
    case Command::CertInstallCa: return "cert install-ca";
    case Command::CertInstall: return "cert install";
    case Command::Reset: return "reset";
    }
    return "?";
}

}  // namespace corvelctl
