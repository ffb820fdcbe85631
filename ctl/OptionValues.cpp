#include "ctl/OptionValues.h"

namespace corvelctl {

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

}  // namespace corvelctl
