// The 802.1x sequence: the validate-certificate flag decided by the printer's
// certificate lists, and the items of its two requests. (A refused first
// request, a silent certificate manager and an installed CA alone are tested
// end to end.)
#include <gtest/gtest.h>

#include "npa/tests/NpaTestSupport.h"
#include "tests/support/CertAnswers.h"

namespace {

const char* const kAccepted = "A5 00 04 50 E0 DA 01 01";
const char* const kStatusAnswer = "A5 00 09 50 E0 D8 00 2A 1D 00 01 02";

bool isCertificateCall(const std::vector<uint8_t>& request) { return request.size() > 3 && request[3] == 0x80; }

TEST(Config8021x, ValidateFlagFollowsThePrintersCertificateLists)
{
    const struct {
        const char* name;
        std::vector<std::string> answers;  // the certificate manager's, in order ("" silent)
        int flag;
    } cases[] = {
        {"one friendly name, no CA", {answerPacket(listAnswerXml({"a"})), answerPacket(listAnswerXml({}))}, 0},
        {"two friendly names", {answerPacket(listAnswerXml({"a", "b"}))}, 1},
        {"friendly list refused, one CA", {answerPacket(answerXml(3)), answerPacket(listAnswerXml({"ca"}))}, 1},
    };
    for (const auto& c : cases) {
        ConfigDetails details;
        details.security = "802.1x";
        details.ssid = "net";
        ConfiguratorUnderTest t(details);
        t.configurator.setPassThrough(false);
        for (const std::string& answer : c.answers) t.transport.addAnswer(answer);
        t.transport.addAnswer(kAccepted);
        t.transport.addAnswer(kAccepted);
        t.transport.addAnswer(kStatusAnswer);
        const Captured captured = captureOutput([&] { EXPECT_EQ(t.configurator.advancedConfig(), 0) << c.name; });

        ASSERT_EQ(t.transport.writes.size(), c.answers.size() + 3) << c.name;
        for (size_t i = 0; i < c.answers.size(); ++i) EXPECT_TRUE(isCertificateCall(t.transport.writes[i])) << c.name;
        const std::vector<uint8_t>& options = t.transport.writes[c.answers.size()];
        EXPECT_EQ(options.back(), c.flag) << c.name;
        EXPECT_NE(captured.err.find("D [CVL] Validate certificate? " + std::to_string(c.flag) + "\n"),
                  std::string::npos)
            << c.name;
    }
}

TEST(Config8021x, StaticWEPKeysFollowThe8021xItemsAndSSIDComesBeforeChannel)
{
    ConfigDetails details;
    details.security = "802.1x";
    details.encryption = "WEP-STATIC";
    details.authInner = "PAP";
    details.user8021x = "alice";
    details.pwd8021x = "pw";
    details.ssid = "net";
    ConfiguratorUnderTest t(details);
    t.configurator.setPassThrough(false);
    t.transport.addAnswer(answerPacket(listAnswerXml({"a", "b"})));
    t.transport.addAnswer(kAccepted);
    t.transport.addAnswer(kAccepted);
    t.transport.addAnswer(kStatusAnswer);
    captureOutput([&] { EXPECT_EQ(t.configurator.advancedConfig(), 0); });
    ASSERT_EQ(t.transport.writes.size(), 4u);
    EXPECT_EQ(itemKeys(t.transport.writes[1]),
              "28/26 2A/14 2A/15 2A/16 2A/17 2A/18 2A/19 2A/1A 2A/02 2A/03 2A/24 28/09 28/0B 28/0D 28/0F 28/1F");
    EXPECT_EQ(itemKeys(t.transport.writes[2]), "28/02 28/22 28/08 28/05");
    EXPECT_EQ(hexOf(t.transport.writes[3]), "A5 00 06 50 E0 D8 00 2A 1D");
}

}  // namespace
