// Filling the configuration record from options, a settings file, a raw
// packet file, or the USB path alone.
#include "app/ConfigDetails.h"

#include <cerrno>
#include <cstdio>
#include <algorithm>
#include <cstring>

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
    for (const OptionKey& option : kOptionKeys)
        getOptionValue(text, option.key, option.field(config));
}

bool containsDash(const std::string& argument) { return argument.find('-') != std::string::npos; }

bool isHexDigit(int c)
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

}  // namespace

int getOptionValue(const std::string& argument, const char* key, std::string& value)
{
    if (argument.find(key) == std::string::npos)
        return 0;

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

    std::FILE* file = std::fopen(fileName.c_str(), "r");
    if (file == nullptr)
        return -1;

    // Lines longer than 255 characters arrive in several pieces, each taken
    // as a line of its own; a carriage return stays part of the text.
    std::vector<std::string> lines;
    char buffer[256];
    for (;;) {
        std::memset(buffer, 0, sizeof buffer);
        if (std::fgets(buffer, sizeof buffer, file) == nullptr)
            break;
        if (char* lineFeed = std::strchr(buffer, '\n'))
            *lineFeed = '\0';
        if (buffer[0] == '#')
            continue;
        lines.emplace_back(buffer);
    }
    // A file that opens but cannot be read (a directory, an I/O error) is
    // reported like one that cannot be opened.
    const bool readFailed = std::ferror(file) != 0;
    const int readErrno = errno;
    std::fclose(file);
    if (readFailed) {
        errno = readErrno;
        return -1;
    }

    for (const std::string& line : lines)
        applyAllKeys(config, line);
    return 0;
}

int findUsbPath(std::string& usbPath, int argc, const std::vector<std::string>& args)
{
    const int count = std::min<int>(argc, static_cast<int>(args.size()));
    for (int i = 1; i < count; ++i) {
        if (!containsDash(args[i]))
            usbPath = args[i];
    }
    return 0;
}

int readNpaFile(ConfigDetails& config, const std::string& path)
{
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr)
        return -1;

    // Every byte that is no hexadecimal digit (blanks, commas, the x of 0x)
    // is skipped.
    config.npaData.clear();
    int c;
    while ((c = std::fgetc(file)) != EOF) {
        if (isHexDigit(c))
            config.npaData.push_back(static_cast<char>(c));
    }
    std::fclose(file);

    std::printf("npaFileData: (%d bytes) %s\n", static_cast<int>(config.npaData.size()), config.npaData.c_str());
    return 0;
}
