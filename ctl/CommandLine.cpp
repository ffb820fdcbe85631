#include "ctl/CommandLine.h"

#include "ctl/CommandLineNames.h"
#include "ctl/CommandTokens.h"
#include "ctl/HelpText.h"
#include "ctl/InvocationRules.h"

#include <string_view>
#include <vector>

namespace corvelctl {

namespace {

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
            const OptionSpec* option = findLongOption(token.substr(2, token.find('=') - 2));
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
        const auto* sub = findNamed(kCertSubcommands, words[1]);
        return sub != nullptr ? commandHelp(sub->value) : certHelp();
    }
    const auto* command = findNamed(kCommands, words[0]);
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
    parsed.invocation = buildInvocation(readCommandTokens(argc, argv));
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
    case Command::Provision: return "provision";
    case Command::CertDefaults: return "cert defaults";
    case Command::CertRequest: return "cert request";
    case Command::CertInstallCa: return "cert install-ca";
    case Command::CertInstall: return "cert install";
    case Command::Reset: return "reset";
    }
    return "?";
}

}  // namespace corvelctl
