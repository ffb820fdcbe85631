// Frames of the requests: read requests, settings requests and the
// pass-through envelope, on the printer's worked examples.
#include <gtest/gtest.h>

#include "npa/NpaFrame.h"
#include "npa/tests/NpaTestSupport.h"

namespace {

TEST(Framing, ReadRequestPlainAndWrapped)
{
    const std::vector<uint8_t> read = npa::readRequest(npa::kAuthStatus);
    EXPECT_EQ(hexOf(read), "A5 00 06 50 E0 D8 00 2A 1D");
    EXPECT_EQ(hexOf(npa::wrapPassThrough(read)), "A5 00 0F 50 E0 63 02 00 09 A5 00 06 50 E0 D8 00 2A 1D");
}

TEST(Framing, OneItemSettingsRequestAndItsEnvelope)
{
    std::vector<uint8_t> items;
    EXPECT_EQ(npa::appendNumericItem(items, npa::kChannel, 6), 9u);
    const std::vector<uint8_t> request = npa::settingsRequest(items);
    EXPECT_EQ(hexOf(request), "A5 00 0D 50 E0 DA 01 28 05 00 00 04 00 00 00 06");
    EXPECT_EQ(hexOf(npa::wrapPassThrough(request)),
              "A5 00 16 50 E0 63 02 00 10 A5 00 0D 50 E0 DA 01 28 05 00 00 04 00 00 00 06");
}

}  // namespace
