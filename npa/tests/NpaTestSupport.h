// Test doubles for the NPA code: a configurator on the scripted printer and
// output capture.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "npa/PasswordPrompt.h"
#include "npa/WirelessConfigurator.h"
#include "tests/support/CaptureOutput.h"
#include "tests/support/ScriptedConnector.h"

#include <gtest/gtest.h>

// The items of a plain settings request in hex ("28 05 00 00 04 00 00 00 06"),
// in order; none for another request. The items must fill the request exactly.
inline std::vector<std::string> settingsItems(const std::string& text)
{
    const std::vector<uint8_t> request(text.begin(), text.end());
    std::vector<std::string> items;
    if (request.size() < 7 || request[4] != 0xE0 || request[5] != 0xDA) {
        return items;
    }
    size_t at = 7;  // after A5, length, flags and E0 DA 01
    while (at + 5 <= request.size()) {
        const size_t end = std::min(request.size(), at + 5 + (request[at + 3] << 8 | request[at + 4]));
        items.push_back(hexOf(std::vector<uint8_t>(request.begin() + at, request.begin() + end)));
        at = end;
    }
    EXPECT_EQ(at, request.size()) << "the items must fill the request exactly";
    return items;
}

// "group/field" of every item of a plain settings request, in order.
inline std::string itemKeys(const std::string& request)
{
    std::string keys;
    for (const std::string& item : settingsItems(request)) {
        keys += (keys.empty() ? "" : " ") + item.substr(0, 2) + "/" + item.substr(3, 2);
    }
    return keys;
}

// A certificate inventory that gives a set answer and counts the questions.
struct FakeCertificateInventory : CertificateInventory {
    bool holdsOwnCertificates(const NPAChannel&) override { return ++questions, holds; }
    bool holds = false;
    int questions = 0;
};

// A password source that answers "typed" and counts the prompts.
struct TypedPassword : PasswordSource {
    std::string password() override { return ++prompts, "typed"; }
    int prompts = 0;
};

// A configurator on the scripted printer and the fake clock; its password
// prompt answers "typed" and counts the prompts. Without an inventory of the
// caller's, it asks `fakeCertificates`.
struct ConfiguratorUnderTest {
    explicit ConfiguratorUnderTest(ConfigDetails details = ConfigDetails(),
                                   CertificateInventory* certificates = nullptr)
        : config(std::move(details)), configurator(config, certificates != nullptr ? *certificates : fakeCertificates)
    {}

    ScopedScriptedPrinter scripted;
    ScriptedPrinter& printer = scripted.printer;
    FakeClock& clock = scripted.fake.clock;
    ConfigDetails config;
    FakeCertificateInventory fakeCertificates;
    WirelessConfigurator configurator;
    TypedPassword typed;
    Seam<PasswordSource>::Override passwordSource{typed};
    int& passwordPrompts = typed.prompts;
};
