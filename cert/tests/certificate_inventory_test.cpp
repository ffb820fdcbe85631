// The certificate inventory of the certificate manager, as the 802.1x sequence
// asks it: the friendly names first, then (unless two or more came) the CAs.
#include <gtest/gtest.h>

#include <algorithm>

#include "cert/CertMgrInventory.h"
#include "npa/tests/NpaTestSupport.h"
#include "tests/support/CertAnswers.h"

namespace {

const char* const kAccepted = "A5 00 04 50 E0 DA 01 01";
const char* const kStatusAnswer = "A5 00 09 50 E0 D8 00 2A 1D 00 01 02";

bool isCertificateCall(const std::string& request) { return request.size() > 3 && request[3] == '\x80'; }

TEST(CertMgrInventory, ValidateFlagFollowsThePrintersCertificateLists)
{
    const struct {
        const char* name;
        std::vector<std::string> answers;  // the certificate manager's, in order
        int flag;
    } cases[] = {
        {"one friendly name, no CA", {answerPacket(listAnswerXml({"a"})), answerPacket(listAnswerXml({}))}, 0},
        {"two friendly names", {answerPacket(listAnswerXml({"a", "b"}))}, 1},
        {"friendly list refused, one CA", {answerPacket(answerXml(3)), answerPacket(listAnswerXml({"ca"}))}, 1},
        {"friendly list refused, CA list refused", {answerPacket(answerXml(3)), answerPacket(answerXml(3))}, 0},
    };
    for (const auto& c : cases) {
        ConfigDetails details;
        details.security = "802.1x";
        details.encryption = "AES";
        details.user8021x = "alice";
        details.pwd8021x = "pw";
        details.ssid = "net";
        CertMgrInventory inventory;
        ConfiguratorUnderTest t(details, &inventory);
        t.configurator.setPassThrough(false);
        for (const std::string& answer : c.answers) t.printer.addAnswer(answer);
        t.printer.addAnswer(kAccepted);
        t.printer.addAnswer(kAccepted);
        t.printer.addAnswer(kStatusAnswer);
        const Captured captured = captureOutput([&] { EXPECT_EQ(t.configurator.advancedConfig(), 0) << c.name; });

        const auto& writes = t.printer.writes;
        ASSERT_EQ(writes.size(), c.answers.size() + 3) << c.name;
        for (size_t i = 0; i < c.answers.size(); ++i) EXPECT_TRUE(isCertificateCall(writes[i])) << c.name;
        const std::vector<std::string> items = settingsItems(writes[c.answers.size()]);
        EXPECT_NE(std::find(items.begin(), items.end(), "2A 24 00 00 01 0" + std::to_string(c.flag)), items.end())
            << c.name;
        EXPECT_NE(captured.err.find("D [CVL] Validate certificate? " + std::to_string(c.flag) + "\n"),
                  std::string::npos)
            << c.name;
    }
}

// A channel without a device path: no client, no call, no certificates.
TEST(CertMgrInventory, ChannelWithoutDeviceHoldsNone)
{
    ScopedScriptedPrinter scripted;
    CertMgrInventory inventory;
    const NPAChannel channel("");
    const Captured captured = captureOutput([&] { EXPECT_FALSE(inventory.holdsOwnCertificates(channel)); });
    EXPECT_TRUE(scripted.printer.writes.empty());
    EXPECT_EQ(captured.err, "D [CVL] Error: No USB device is specified!\n");
}

}  // namespace
