#include "ctl/CommandTokens.h"

#include "ctl/CommandLineNames.h"
#include "ctl/UsageFailure.h"

namespace corvelctl {

namespace {

const OptionSpec kOptions[] = {
    {"printer", 0, Takes::Value, Scope::Global, true},
    {"all", 0, Takes::Nothing, Scope::Global},
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
    {"settings", 0, Takes::Value, Scope::Provision},
    {"settings-dir", 0, Takes::Value, Scope::Provision},
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

const OptionSpec* findShort(char name)
{
    for (const OptionSpec& option : kOptions) {
        if (option.shortName != 0 && option.shortName == name) return &option;
    }
    return nullptr;
}

// The scope the options of `command` belong to.
Scope scopeOf(Command command)
{
    if (command == Command::Wifi) return Scope::Wifi;
    if (command == Command::Provision) return Scope::Provision;
    if (command == Command::CertRequest) return Scope::CertRequest;
    return Scope::Global;
}

const char* scopeCommand(Scope scope)
{
    switch (scope) {
    case Scope::Global: break;
    case Scope::Wifi: return "wifi";
    case Scope::Provision: return "provision";
    case Scope::CertRequest: return "cert request";
    }
    return "every command";
}

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
            const auto* sub = findNamed(kCertSubcommands, token);
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
        const auto* command = findNamed(kCommands, token);
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
        if (option.repeatable) {
            m_Raw.repeatedValues[option.name].push_back(std::move(value));
            return;
        }
        if (!m_Raw.values.emplace(option.name, std::move(value)).second) {
            throw usage("--" + std::string(option.name) + " given twice");
        }
    }

    void longOption(const std::string& token)
    {
        const std::size_t equals = token.find('=');
        const std::string name = token.substr(2, equals == std::string::npos ? std::string::npos : equals - 2);
        const OptionSpec* option = findLongOption(name);
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

}  // namespace

const OptionSpec* findLongOption(std::string_view name)
{
    for (const OptionSpec& option : kOptions) {
        if (name == option.name) return &option;
    }
    return nullptr;
}

bool isShortCluster(std::string_view token) { return token.size() > 1 && token[0] == '-' && token[1] != '-'; }

RawCommandLine readCommandTokens(int argc, const char* const* argv) { return TokenReader(argc, argv).read(); }

}  // namespace corvelctl
