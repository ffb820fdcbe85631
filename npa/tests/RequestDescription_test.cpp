// What a front end's trace shows of a request: the words for it, and never a secret.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "npa/NpaFrame.h"
#include "npa/RequestDescription.h"

namespace {

bool contains(const std::vector<uint8_t>& bytes, const std::string& text)
{
    return std::search(bytes.begin(), bytes.end(), text.begin(), text.end()) != bytes.end();
}

TEST(RequestDescription, SecretItemsAreMaskedAndNothingElseIs)
{
    std::vector<uint8_t> items;
    npa::appendTextItem(items, npa::kSSID, "home-net", 0xFFFF, true);
    npa::appendTextItem(items, npa::kPassphrase, "psk-secret", 64, false);
    npa::appendTextItem(items, {0x28, 0x0D}, "wep-3-key", 26, false);  // the third WEP key
    npa::appendTextItem(items, npa::k8021xPassword, "eap-secret", 256, true);
    npa::appendTextItem(items, npa::k8021xUser, "alice", 32, true);
    const std::vector<uint8_t> plain = npa::settingsRequest(items);
    for (const std::vector<uint8_t>& request : {plain, npa::wrapPassThrough(plain)}) {
        const std::vector<uint8_t> masked = npa::maskSecrets(request);
        ASSERT_EQ(masked.size(), request.size());
        for (const char* secret : {"psk-secret", "wep-3-key", "eap-secret"}) {
            EXPECT_TRUE(contains(request, secret));
            EXPECT_FALSE(contains(masked, secret)) << secret;
        }
        EXPECT_TRUE(contains(masked, "home-net"));
        EXPECT_TRUE(contains(masked, "alice"));
        size_t changed = 0;
        for (size_t i = 0; i < request.size(); ++i) changed += masked[i] != request[i];
        EXPECT_EQ(changed, 10u + 9u + 11u) << "the values whole, the zero ending the 802.1x password too";
    }
    // A length field that runs past the end masks up to the end, no further.
    std::vector<uint8_t> cut = npa::settingsRequest(items);
    cut.resize(cut.size() - 20);
    EXPECT_EQ(npa::maskSecrets(cut).size(), cut.size());
}

TEST(RequestDescription, NamesTheRequest)
{
    std::vector<uint8_t> items;
    npa::appendFlagItem(items, npa::kReset, 1);
    const struct {
        std::vector<uint8_t> request;
        const char* words;
    } cases[] = {
        {npa::readRequest(npa::kSSID), "read 28:08"},
        {npa::wrapPassThrough(npa::readRequest(npa::kIPv4Address)), "read 0A:02 in the pass-through envelope"},
        {npa::settingsRequest(items), "settings (1 item)"},
        {{0xA5, 0x00, 0x01, 0x80}, "certificate-manager call"},
        {{0x01, 0x02}, "request of 2 bytes"},
    };
    for (const auto& c : cases) EXPECT_EQ(npa::describeRequest(c.request), c.words);
}

}  // namespace
