// The values of options, read from their text. Each reader throws Failure
// (exit 64) with a message that names the option and says what it allows.
#pragma once

#include "ctl/CommandLine.h"
#include "ctl/CommandLineNames.h"
#include "ctl/UsageFailure.h"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace corvelctl {

// Digits only, at most nine of them, from `minimum` to `maximum`; or nothing.
std::optional<int> decimal(std::string_view text, int minimum, int maximum);

int integerOption(const std::string& name, const std::string& text, int minimum, int maximum);

// Seconds with up to three decimals, such as "5" or "2.5", 1-600.
std::chrono::milliseconds timeoutOption(const std::string& text);

template <typename Value, std::size_t N>
Value namedOption(const std::string& name, const std::string& text, const Named<Value> (&table)[N])
{
    const auto* entry = findNamed(table, text);
    if (entry == nullptr) throw usage("--" + name + " " + quoted(text) + " is not one of " + namesOf(table));
    return entry->value;
}

// Like namedOption, but the names the printer does not have are answered
// with the one to use instead.
Security securityOption(const std::string& text);

void checkLength(const std::string& name, const std::string& text, std::size_t maximum);
void checkNoControlCharacters(const std::string& name, const std::string& text);

// A comma-separated list of EAP methods, none twice.
std::vector<EapMethod> eapOption(const std::string& text);

}  // namespace corvelctl
