// The 802.1x sequence: the validate-certificate flag the certificate inventory
// decides, the items of its two requests (a refused first request, a silent
// certificate manager and an installed CA alone are tested end to end), and
// the 802.1x queries.
#include <gtest/gtest.h>

#include <algorithm>

#include "npa/tests/NpaTestSupport.h"

namespace {

const char* const kAccepted = "A5 00 04 50 E0 DA 01 01";
const char* const kStatusAnswer = "A5 00 09 50 E0 D8 00 2A 1D 00 01 02";

// The validate flag item of the 802.1x request is what the certificate
// inventory says, asked once; static WEP keys follow the 802.1x items, and the
// SSID comes before the channel in the second request.
TEST(Config8021x, ValidateFlagFollowsTheCertificateInventoryThenTheItemsInOrder)
{
    for (const bool holds : {false, true}) {
        ConfigDetails details;
        details.security = "802.1x";
        details.encryption = "WEP-STATIC";
        details.authInner = "PAP";
        details.user8021x = "alice";
        details.pwd8021x = "pw";
        details.ssid = "net";
        ConfiguratorUnderTest t(details);
        t.fakeCertificates.holds = holds;
        t.configurator.setPassThrough(false);
        t.printer.addAnswer(kAccepted);
        t.printer.addAnswer(kAccepted);
        t.printer.addAnswer(kStatusAnswer);
        const Captured captured = captureOutput([&] { EXPECT_EQ(t.configurator.advancedConfig(), 0); });

        const std::string flag = holds ? "1" : "0";
        EXPECT_EQ(t.fakeCertificates.questions, 1);
        const auto& writes = t.printer.writes;
        ASSERT_EQ(writes.size(), 3u);
        const std::vector<std::string> items = settingsItems(writes[0]);
        EXPECT_NE(std::find(items.begin(), items.end(), "2A 24 00 00 01 0" + flag), items.end());
        EXPECT_NE(captured.err.find("D [CVL] Validate certificate? " + flag + "\n"), std::string::npos);
        EXPECT_EQ(itemKeys(writes[0]),
                  "28/26 2A/14 2A/15 2A/16 2A/17 2A/18 2A/19 2A/1A 2A/02 2A/03 2A/24 28/09 28/0B 28/0D 28/0F 28/1F");
        EXPECT_EQ(itemKeys(writes[1]), "28/02 28/22 28/08 28/05");
        EXPECT_EQ(hexOf(writes.back()), "A5 00 06 50 E0 D8 00 2A 1D");
    }
}

// The 802.1x queries search the collected answer for the inner read answer;
// the answer is untrusted, so the search and the value must stay inside it.
// A wrapped answer to a read of 2A/field: envelope, then the inner answer
// packet with the declared value length and the value bytes given.
std::string wrappedReadAnswer(const char* field, const char* declaredLength, const std::string& value)
{
    return std::string("A5 00 00 50 E0 63 02 00 00 A5 00 00 50 E0 D8 00 2A ") + field + " " + declaredLength + " " +
           value;
}

TEST(Queries, ReportTheValueFoundInsideTheAnswer)
{
    using Q = WirelessConfigurator;
    const struct {
        int (Q::*query)();
        std::string answer;
        int result;
        const char* line;  // the value's line on standard error; nullptr: none
    } cases[] = {
        {&Q::queryAuthStatus, wrappedReadAnswer("1D", "00 01", "0B"), 11,
         "D [CVL] Status: 11 (CA Certificate Not Installed)\n"},
        {&Q::queryAuthStatus, wrappedReadAnswer("1D", "00 01", "0E"), 14, "D [CVL] Status: 14 (Unknown status)\n"},
        {&Q::queryAuthStatus, wrappedReadAnswer("1C", "00 01", "02"), -1, nullptr},  // another field's answer
        {&Q::queryAuthStatus, wrappedReadAnswer("1D", "00 01", ""), -1, nullptr},    // value announced, missing
        {&Q::queryAuthStatus, wrappedReadAnswer("1D", "", ""), -1, nullptr},         // header cut at the end
        {&Q::queryAuthStatus, "", -1, nullptr},
        {&Q::queryCertSettings, wrappedReadAnswer("06", "00 05", hexOf("Acme") + " 00"), 0,
         "D [CVL] Organization (5 bytes): Acme\n"},
        {&Q::queryCertSettings, wrappedReadAnswer("06", "01 2C", hexOf("Acme")), 0,
         "D [CVL] Organization (4 bytes): Acme\n"},  // value cut at the end of the answer
        {&Q::queryCertSettings, wrappedReadAnswer("06", "00 00", ""), 0, "D [CVL] Organization (0 bytes): \n"},
        {&Q::queryCertSettings, wrappedReadAnswer("06", "00", ""), 0, nullptr},
    };
    for (const auto& c : cases) {
        ConfiguratorUnderTest t;
        std::vector<uint8_t> answer = bytesFromHex(c.answer);
        if (!answer.empty()) {
            answer[2] = static_cast<uint8_t>(answer.size() - 3);  // the envelope's frame length
        }
        t.printer.addAnswer(answer);
        const Captured captured = captureOutput([&] { EXPECT_EQ((t.configurator.*c.query)(), c.result) << c.answer; });
        // 2 s after the request, then reads for 3 s; a silent read lets 5 s pass.
        EXPECT_LT(t.clock.now() - t.clock.start, 2 + 3 + 5 + 5 * (c.query == &Q::queryCertSettings));
        const bool valueShown = captured.err.find("Status:") != std::string::npos ||
                                captured.err.find("Organization (") != std::string::npos;
        EXPECT_EQ(valueShown, c.line != nullptr) << c.answer << "\n" << captured.err;
        if (c.line != nullptr) {
            EXPECT_NE(captured.err.find(c.line), std::string::npos) << captured.err;
        }
    }
}

}  // namespace
