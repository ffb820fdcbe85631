// With a console of its own installed, a front end runs every advanced
// sequence (in the pass-through envelope) and the default run without a byte
// on standard output or standard error: the trace and the user's lines all
// reach the console.
#include <gtest/gtest.h>

#include "common/Console.h"
#include "npa/tests/NpaTestSupport.h"

namespace {

const char* const kWrappedAccepted = "A5 00 0D 50 E0 63 02 00 07 A5 00 04 50 E0 DA 01 01";

struct RecordingConsole : Console {
    void trace(std::string_view text) override { traced += text; }
    void user(std::string_view text) override { shown += text; }
    std::string traced, shown;
};

TEST(QuietConsole, AdvancedSequencesWriteOnlyToTheInstalledConsole)
{
    const struct {
        const char* security;
        const char* encryption;
        const char* traceLine;
    } cases[] = {
        {"OPEN", "WEP", "D [CVL] Adv OPEN ret = 0\n"},
        {"SHARED", "", "D [CVL] Adv SHARED ret = 0\n"},
        {"WPA-PER", "AES", "D [CVL] Adv WPA-Personal ret = 0\n"},
        {"WPA-ENT", "TKIP", "D [CVL] Adv WPA-Ent ret = 0\n"},
        {"802.1x", "AES", "D [CVL] Adv 8021x ret = 0\n"},
    };
    for (const auto& c : cases) {
        RecordingConsole console;
        const Captured captured = captureOutput([&] {
            Seam<Console>::Override installed(console);
            ConfigDetails details;
            details.security = c.security;
            details.encryption = c.encryption;
            details.ssid = "net";
            details.wepKey[0] = "abcde";
            details.psk = "passphrase";
            details.user8021x = "alice";
            details.pwd8021x = "pw";
            ConfiguratorUnderTest t(details);
            t.fakeCertificates.holds = true;
            for (int i = 0; i < 3; ++i) t.printer.addAnswer(kWrappedAccepted);
            EXPECT_EQ(t.configurator.advancedConfig(), 0) << c.security;
            EXPECT_GE(t.printer.writes.size(), 1u) << c.security;
        });
        EXPECT_EQ(captured.out, "") << c.security;
        EXPECT_EQ(captured.err, "") << c.security;
        EXPECT_NE(console.traced.find(c.traceLine), std::string::npos) << c.security << "\n" << console.traced;
        // The transport singleton went with the configurator, inside the scope.
        EXPECT_NE(console.traced.find("D [CVL] Destroying last instance of usb transport.\n"), std::string::npos);
    }
}

TEST(QuietConsole, DefaultRunShowsTheUserLinesOnTheInstalledConsole)
{
    RecordingConsole console;
    const Captured captured = captureOutput([&] {
        Seam<Console>::Override installed(console);
        ConfigDetails details;
        details.ssid = "net";
        ConfiguratorUnderTest t(details);
        t.configurator.configurePrinter();
    });
    EXPECT_EQ(captured.out, "");
    EXPECT_EQ(captured.err, "");
    EXPECT_NE(console.shown.find("Configuring the printer....\nResetting the printer....\n"), std::string::npos)
        << console.shown;
    EXPECT_FALSE(console.traced.empty());
}

}  // namespace
