// Filling the configuration record from options, a settings file, a raw
// packet file, or the USB path alone.
#include "app/OptionParsing.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "app/InputFile.h"

namespace {

struct OptionKey {
    const char* key;
    std::string& (*field)(ConfigDetails&);
};

// Tried in this order on every argument or settings line; each key writes only
// its own field. No key is a substring of another.
const OptionKey kOptionKeys[] = {
    {"--ssid=", [](ConfigDetails& c) -> std::string& { return c.ssid; }},
    {"--channel=", [](ConfigDetails& c) -> std::string& { return c.channel; }},
    {"--mode=", [](ConfigDetails& c) -> std::string& { return c.mode; }},
    {"--security=", [](ConfigDetails& c) -> std::string& { return c.security; }},
    {"--passwd=", [](ConfigDetails& c) -> std::string& { return c.passwd; }},
    {"--encryption=", [](ConfigDetails& c) -> std::string& { return c.encryption; }},
    {"--802-auth-ext=", [](ConfigDetails& c) -> std::string& { return c.authExt; }},
    {"--802-auth-inner=", [](ConfigDetails& c) -> std::string& { return c.authInner; }},
    {"--802-user=", [](ConfigDetails& c) -> std::string& { return c.user8021x; }},
    {"--802-pwd=", [](ConfigDetails& c) -> std::string& { return c.pwd8021x; }},
    {"--802-CA-cer-file=", [](ConfigDetails& c) -> std::string& { return c.caCerFile; }},
    {"--802-signed-cer-file=", [](ConfigDetails& c) -> std::string& { return c.signedCerFile; }},
    {"--WEP-key1=", [](ConfigDetails& c) -> std::string& { return c.wepKey[0]; }},
    {"--WEP-key2=", [](ConfigDetails& c) -> std::string& { return c.wepKey[1]; }},
    {"--WEP-key3=", [](ConfigDetails& c) -> std::string& { return c.wepKey[2]; }},
    {"--WEP-key4=", [](ConfigDetails& c) -> std::string& { return c.wepKey[3]; }},
    {"--WEP-transmit=", [](ConfigDetails& c) -> std::string& { return c.wepTransmit; }},
    {"--psk=", [](ConfigDetails& c) -> std::string& { return c.psk; }},
    {"--cer-common=", [](ConfigDetails& c) -> std::string& { return c.cerCommon; }},
    {"--cer-org=", [](ConfigDetails& c) -> std::string& { return c.cerOrg; }},
    {"--cer-unit=", [](ConfigDetails& c) -> std::string& { return c.cerUnit; }},
    {"--cer-state=", [](ConfigDetails& c) -> std::string& { return c.cerState; }},
    {"--cer-country=", [](ConfigDetails& c) -> std::string& { return c.cerCountry; }},
    {"--cer-city=", [](ConfigDetails& c) -> std::string& { return c.cerCity; }},
    {"--cer-altname=", [](ConfigDetails& c) -> std::string& { return c.cerAltname; }},
    {"--cer-friendly-name=", [](ConfigDetails& c) -> std::string& { return c.cerFriendlyName; }},
    {"--cer-path=", [](ConfigDetails& c) -> std::string& { return c.cerPath; }},
};

void applyAllKeys(ConfigDetails& config, const std::string& text)
{
    for (const OptionKey& option : kOptionKeys) getOptionValue(text, option.key, option.field(config));
}

bool containsDash(const std::string& argument) { return argument.find('-') != std::string::npos; }

bool isHexDigit(int c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f'); }

}  // namespace

int getOptionValue(const std::string& argument, const char* key, std::string& value)
{
    if (argument.find(key) == std::string::npos) return 0;

    // A double quote anywhere in the argument wins over the key's position:
    // the value is what follows it, up to the next quote or the end. This is
    // what lets a settings file hold values with blanks.
    const std::size_t quote = argument.find('"');
    if (quote != std::string::npos) {
        const std::size_t closing = argument.find('"', quote + 1);
        value = argument.substr(quote + 1, closing == std::string::npos ? std::string::npos : closing - quote - 1);
        return 0;
    }

    // The key is expected at the start; its actual position is not used.
    value = argument.substr(std::strlen(key));
    return 0;
}

int parseArguments(ConfigDetails& config, int argc, const std::vector<std::string>& args)
{
    const int count = std::min<int>(argc, static_cast<int>(args.size()));
    for (int i = 1; i < count; ++i) {
        if (containsDash(args[i]))
            applyAllKeys(config, args[i]);
        else
            config.usbPath = args[i];
    }
    return 0;
}

int readConfigFile(ConfigDetails& config, const std::string& fileName, const std::string& usbPath)
{
    config.usbPath = usbPath;

    // A file that opens but cannot be read (a directory, an I/O error) or
    // is too large is reported like one that cannot be opened.
    std::string content;
    if (readInputFile(fileName, content) != InputFileRead::Read) return -1;

    // Lines longer than 255 characters arrive in several pieces, each taken
    // as a line of its own; a carriage return stays part of the text, a zero
    // byte ends it.
    constexpr std::size_t kPiece = 255;
    std::vector<std::string> lines;
    for (std::size_t at = 0; at < content.size();) {
        std::size_t end = std::min(content.size(), at + kPiece);
        const std::size_t lineFeed = content.find('\n', at);
        if (lineFeed != std::string::npos && lineFeed < end) end = lineFeed + 1;
        std::string line = content.substr(at, end - at);
        at = end;
        line.resize(std::strlen(line.c_str()));
        if (!line.empty() && line.back() == '\n') line.pop_back();
        if (!line.empty() && line[0] == '#') continue;
        lines.push_back(line);
    }

    for (const std::string& line : lines) applyAllKeys(config, line);
    return 0;
}

int findUsbPath(std::string& usbPath, int argc, const std::vector<std::string>& args)
{
    const int count = std::min<int>(argc, static_cast<int>(args.size()));
    for (int i = 1; i < count; ++i) {
        if (!containsDash(args[i])) usbPath = args[i];
    }
    return 0;
}

int readNpaFile(ConfigDetails& config, const std::string& path)
{
    std::string content;
    const InputFileRead outcome = readInputFile(path, content);
    if (outcome == InputFileRead::CannotOpen) return -1;
    if (outcome == InputFileRead::TooLarge) return -2;

    // Every byte that is no hexadecimal digit (blanks, commas, the x of 0x)
    // is skipped; a read error keeps what came before it.
    config.npaData.clear();
    for (char c : content) {
        if (isHexDigit(static_cast<unsigned char>(c))) config.npaData.push_back(c);
    }

    std::printf("npaFileData: (%d bytes) %s\n", static_cast<int>(config.npaData.size()), config.npaData.c_str());
    return 0;
}
