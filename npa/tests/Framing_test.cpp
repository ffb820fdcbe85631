// Frames of the requests: read requests, settings requests and the
// pass-through envelope, on the printer's worked examples.
#include <gtest/gtest.h>

#include "npa/tests/NpaTestSupport.h"

namespace {

TEST(Framing, ReadRequestPlainAndWrapped)
{
    ConfiguratorUnderTest t;
    EXPECT_EQ(hexOf(t.configurator.prepareReadRequest(0x2A, 0x1D)),
              "A5 00 0F 50 E0 63 02 00 09 A5 00 06 50 E0 D8 00 2A 1D");
    t.configurator.setPassThrough(false);
    EXPECT_EQ(hexOf(t.configurator.prepareReadRequest(0x2A, 0x1D)), "A5 00 06 50 E0 D8 00 2A 1D");
}

TEST(Framing, OneItemSettingsRequestAndItsEnvelope)
{
    ConfiguratorUnderTest t;
    const int32_t settingsLength = t.configurator.wrapSettings(t.configurator.addChannel());
    EXPECT_EQ(settingsLength, 16);
    std::vector<uint8_t> request = t.configurator.getPacket();
    EXPECT_EQ(hexOf(request), "A5 00 0D 50 E0 DA 01 28 05 00 00 04 00 00 00 06");

    EXPECT_EQ(WirelessConfigurator::wrapPassThrough(request, settingsLength), 25);
    EXPECT_EQ(hexOf(request), "A5 00 16 50 E0 63 02 00 10 A5 00 0D 50 E0 DA 01 28 05 00 00 04 00 00 00 06");
}

}  // namespace
