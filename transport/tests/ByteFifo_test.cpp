// The connector's receive FIFO: wrapping, full and empty, and its lock.
#include "transport/ByteFifo.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <memory>
#include <numeric>
#include <thread>
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

// put and get call freeSpace and usedSpace while holding the lock: with a
// lock that is not error-checking they would block themselves. Afterwards
// the lock is free again: another thread can use the FIFO.
TEST(ByteFifoTest, NestedCallsLeaveTheLockFreeForAnotherThread)
{
    auto fifo = std::make_shared<ByteFifo>(65536);
    std::vector<uint8_t> bytes(65536);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = uint8_t(i * 7);
    ASSERT_TRUE(fifo->put(bytes.data(), bytes.size()));
    EXPECT_FALSE(fifo->put(bytes.data(), 1));

    // Detached, so that a lock left held fails the test instead of hanging it.
    auto taken = std::make_shared<std::promise<std::vector<uint8_t>>>();
    std::future<std::vector<uint8_t>> result = taken->get_future();
    std::thread([fifo, taken] {
        std::vector<uint8_t> out(65536);
        taken->set_value(fifo->get(out.data(), out.size()) ? out : std::vector<uint8_t>{});
    }).detach();
    ASSERT_EQ(result.wait_for(std::chrono::seconds(10)), std::future_status::ready) << "the lock was left held";
    EXPECT_EQ(result.get(), bytes);
    EXPECT_TRUE(fifo->isEmpty());
}

}  // namespace
