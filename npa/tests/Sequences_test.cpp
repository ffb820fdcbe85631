// The configuration sequences: the worked example request and a request too
// long for its length field (each sequence's items, in order, are checked end
// to end).
#include <gtest/gtest.h>

#include "npa/tests/NpaTestSupport.h"

namespace {

TEST(Sequences, BasicConfigRequestOfTheWorkedExample)
{
    ConfigDetails details;
    details.ssid = "net";
    ConfiguratorUnderTest t(details);
    t.configurator.setPassThrough(false);
    t.transport.addAnswer("A5 00 04 50 E0 DA 01");
    captureOutput([&] { EXPECT_EQ(t.configurator.basicConfig(), 0); });
    ASSERT_EQ(t.transport.writes.size(), 1u);
    EXPECT_EQ(hexOf(t.transport.writes[0]),
              "A5 00 28 50 E0 DA 01 28 02 00 00 04 00 00 00 00 28 22 00 00 04 00 00 00 00 "
              "28 05 00 00 04 00 00 00 06 28 08 00 00 04 6E 65 74 00");
}

TEST(Sequences, ARequestTooLongForItsLengthFieldIsNotSent)
{
    ConfigDetails details;
    details.ssid = std::string(70000, 's');  // the SSID value alone overflows the 16-bit length
    ConfiguratorUnderTest t(details);
    t.configurator.setPassThrough(false);
    const Captured captured = captureOutput([&] { EXPECT_EQ(t.configurator.basicConfig(), -1); });
    EXPECT_TRUE(t.transport.writes.empty());
    EXPECT_NE(captured.err.find("D [CVL] Settings request too long (65574 bytes)!\n"), std::string::npos);
}

}  // namespace
