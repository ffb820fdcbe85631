// The connector's receive FIFO: wrapping, full and empty.
#include "transport/ByteFifo.h"

#include <gtest/gtest.h>

#include <numeric>
#include <vector>

namespace {

std::vector<uint8_t> counting(size_t count, uint8_t from)
{
    std::vector<uint8_t> bytes(count);
    std::iota(bytes.begin(), bytes.end(), from);
    return bytes;
}

// From every start position of the store, filling up to the capacity and
// emptying again returns the bytes in order; one byte more never fits.
TEST(ByteFifoTest, WrapsAroundFromEveryPosition)
{
    constexpr size_t kCapacity = 8;
    for (size_t start = 0; start <= kCapacity; ++start) {
        SCOPED_TRACE(start);
        ByteFifo fifo(kCapacity);
        std::vector<uint8_t> out(kCapacity), lead = counting(start, 100), all = counting(kCapacity, 1);
        ASSERT_TRUE(fifo.put(lead.data(), lead.size()) && fifo.get(out.data(), lead.size()));
        ASSERT_TRUE(fifo.put(all.data(), 3));
        EXPECT_EQ(fifo.usedSpace(), 3u);
        EXPECT_EQ(fifo.freeSpace(), kCapacity - 3);
        ASSERT_TRUE(fifo.put(all.data() + 3, kCapacity - 3));
        EXPECT_FALSE(fifo.put(all.data(), 1)) << "a full FIFO takes nothing";
        ASSERT_TRUE(fifo.get(out.data(), 2));
        EXPECT_EQ(fifo.freeSpace(), 2u);
        ASSERT_TRUE(fifo.get(out.data() + 2, kCapacity - 2));
        EXPECT_EQ(out, all);
        EXPECT_TRUE(fifo.isEmpty());
        EXPECT_FALSE(fifo.get(out.data(), 1)) << "an empty FIFO gives nothing";
    }
}

}  // namespace
