// Frames of the requests: byte order, read and settings requests, the
// pass-through envelope, the channel's hold on the transport and the raw sender.
#include <gtest/gtest.h>

#include "npa/ByteOrder.h"
#include "npa/tests/NpaTestSupport.h"
#include "tests/support/FakeClock.h"

namespace {

TEST(ByteOrder, WritesAndReadsMostSignificantFirst)
{
    const struct {
        uint32_t value;
        int count;
        const char* bytes;
        uint32_t readBack;
    } cases[] = {
        {0x1234, 2, "12 34", 0x1234}, {0x12345678, 2, "56 78", 0x5678}, {0x0102, 6, "00 00 00 00 01 02", 0x0102}};
    for (const auto& c : cases) {
        std::vector<uint8_t> out(static_cast<size_t>(c.count));
        toBigEndian(c.value, out.data(), c.count);
        EXPECT_EQ(hexOf(out), c.bytes);
        EXPECT_EQ(fromBigEndian(out.data(), c.count), c.readBack);
    }
}

TEST(Framing, ReadRequestPlainAndWrapped)
{
    ConfiguratorUnderTest t;
    EXPECT_EQ(hexOf(t.configurator.prepareReadRequest(0x2A, 0x1D)),
              "A5 00 0F 50 E0 63 02 00 09 A5 00 06 50 E0 D8 00 2A 1D");
    t.configurator.setPassThrough(false);
    EXPECT_EQ(hexOf(t.configurator.prepareReadRequest(0x2A, 0x1D)), "A5 00 06 50 E0 D8 00 2A 1D");
    EXPECT_TRUE(t.configurator.getPacket().empty()) << "read requests are built aside";
}

TEST(Framing, OneItemSettingsRequestAndItsEnvelope)
{
    ConfiguratorUnderTest t;
    const int32_t settingsLength = t.configurator.wrapSettings(t.configurator.addChannel());
    EXPECT_EQ(settingsLength, 16);
    EXPECT_EQ(hexOf(t.configurator.getPacket()), "A5 00 0D 50 E0 DA 01 28 05 00 00 04 00 00 00 06");

    std::vector<uint8_t> request = t.configurator.getPacket();
    EXPECT_EQ(WirelessConfigurator::wrapPassThrough(request, settingsLength), 25);
    EXPECT_EQ(hexOf(request), "A5 00 16 50 E0 63 02 00 10 A5 00 0D 50 E0 DA 01 28 05 00 00 04 00 00 00 06");
}

TEST(Framing, ChannelGivesItsTransportReferenceBack)
{
    const Captured captured = captureOutput([] { NPAChannel channel("/dev/usb/lp0"); });
    EXPECT_EQ(captured.err, "D [CVL] Destroying last instance of usb transport.\n");
}

TEST(Framing, SendNPASendsTheBytesUnchanged)
{
    ScopedFakeClock clock;
    ConfiguratorUnderTest t;  // passThrough stays true: raw bytes are never wrapped
    const std::vector<uint8_t> raw = bytesFromHex("A5 00 06 50 E0 D8 00 28 08");
    t.transport.addAnswer("A5 00 04 50 E0 D8 00");
    Captured captured = captureOutput([&] { EXPECT_EQ(t.configurator.sendNPA(raw.data(), 9, 10), 0); });
    EXPECT_EQ(t.transport.writes, std::vector<std::vector<uint8_t>>{raw});
    EXPECT_NE(captured.err.find("D [CVL] sendNPA response (3 bytes)\n"), std::string::npos) << captured.err;

    captured = captureOutput([&] { EXPECT_EQ(t.configurator.sendNPA(nullptr, 0, 10), 0); });
    EXPECT_EQ(t.transport.writes.size(), 2u) << "an empty packet file still makes one exchange";
    EXPECT_NE(captured.err.find("D [CVL] sendNPA response (0 bytes)\n"), std::string::npos) << captured.err;
}

}  // namespace
