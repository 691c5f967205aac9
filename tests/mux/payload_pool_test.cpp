// The memory of payloads: used again, bounded, and alive until its last byte is back.
#include "mux/payload_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

namespace {

class PayloadPoolTest : public ::testing::Test {
  protected:
    win::OwnedBytes Take(UINT32 size) {
        auto bytes = pool->Take(size);
        std::memset(bytes.get(), 0x5a, size); // the sanitizers would tell of too small a block
        return bytes;
    }

    CPayloadPool::Handle pool = CPayloadPool::Make();
};

TEST_F(PayloadPoolTest, MemoryThatCameBackIsUsedAgain) {
    auto bytes = Take(5000);
    const BYTE* const first = bytes.get();
    bytes.reset();
    EXPECT_EQ(first, Take(5000).get());
    EXPECT_EQ(first, Take(4900).get());
}

TEST_F(PayloadPoolTest, EverySizeGetsABlockThatIsAtMostAnEighthLarger) {
    for (UINT32 size : {1u, 63u, 64u, 65u, 72u, 73u, 127u, 128u, 129u, 255u, 256u, 1000u, 65535u, 65536u, 65537u,
                        3145728u, 3145729u, 33554433u}) {
        const CPayloadPool::Handle fresh = CPayloadPool::Make();
        const auto bytes = fresh->Take(size);
        std::memset(bytes.get(), 1, size);
        EXPECT_GE(fresh->HeldBytes(), size);
        EXPECT_LE(fresh->HeldBytes(), std::max<size_t>(64, size + size / 8 + 1)) << size;
    }
}

TEST_F(PayloadPoolTest, ASmallPayloadDoesNotTakeALargeBlock) {
    Take(100000).reset();
    const size_t before = pool->HeldBytes();
    const auto small = Take(62);
    EXPECT_EQ(before + 64, pool->HeldBytes());
}

TEST_F(PayloadPoolTest, WhatJustFitsIntoTheSlackStaysAndOfMoreTheLargestGoes) {
    constexpr UINT32 kSlack = CPayloadPool::kSlackBytes;
    constexpr UINT32 kLarge = 1048576;
    const auto keptOf = [](const std::vector<UINT32>& sizes) {
        const CPayloadPool::Handle fresh = CPayloadPool::Make();
        std::vector<win::OwnedBytes> out;
        for (const UINT32 size : sizes) {
            out.push_back(fresh->Take(size));
        }
        out.clear();
        const auto large = fresh->Take(kLarge); // more than was ever in use
        return fresh->HeldBytes() - kLarge;
    };
    EXPECT_EQ(kSlack, keptOf({kSlack}));
    EXPECT_EQ(kSlack, keptOf({kSlack, kSlack}));
    EXPECT_EQ(4096u, keptOf({4096, kSlack})); // as large as a block of its own
}

TEST_F(PayloadPoolTest, WhatIsHeldIsNeverMoreThanTheMostThatWasInUseAndTheSlack) {
    std::mt19937 random(3);
    std::vector<win::OwnedBytes> out;
    std::vector<size_t> sizes;
    size_t used = 0;
    size_t mostUsed = 0;
    for (int i = 0; i < 20000; ++i) {
        if (out.size() < 12 && random() % 2 == 0) {
            const auto size = static_cast<UINT32>(1 + random() % (size_t{1} << (6 + random() % 16)));
            out.push_back(pool->Take(size));
            sizes.push_back(size);
            used += size;
            mostUsed = std::max(mostUsed, used);
        } else if (!out.empty()) {
            const size_t which = random() % out.size();
            used -= sizes[which];
            out.erase(out.begin() + static_cast<std::ptrdiff_t>(which));
            sizes.erase(sizes.begin() + static_cast<std::ptrdiff_t>(which));
        }
        // A block that is used again may be larger by half, and then an eighth.
        ASSERT_LE(pool->HeldBytes(), mostUsed * 27 / 16 + 12 * 64 + CPayloadPool::kSlackBytes) << i;
    }
}

TEST_F(PayloadPoolTest, PayloadsOutliveThePool) {
    auto first = Take(1000);
    auto second = Take(2000);
    Take(3000).reset();
    pool.reset();
    EXPECT_EQ(0x5a, first[999]);
    first.reset();
    EXPECT_EQ(0x5a, second[1999]);
    std::jthread([bytes = std::move(second)] {}).join(); // the last one goes elsewhere; nothing may leak
}

TEST_F(PayloadPoolTest, ManyThreadsGiveBackWhileOneTakesAndThePoolIsClosed) {
    for (int round = 0; round < 20; ++round) {
        std::mutex lock;
        std::vector<win::OwnedBytes> out; // guarded by lock
        bool done = false;                // guarded by lock
        std::vector<std::jthread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&] {
                for (;;) {
                    win::OwnedBytes bytes;
                    {
                        const std::lock_guard guard(lock);
                        if (!out.empty()) {
                            bytes = std::move(out.back());
                            out.pop_back();
                        } else if (done) {
                            return;
                        }
                    }
                    if (bytes) {
                        ASSERT_EQ(0x5a, bytes[0]);
                    }
                }
            });
        }
        for (UINT32 i = 0; i < 2000; ++i) {
            auto bytes = Take(1 + i % 700);
            const std::lock_guard guard(lock);
            out.push_back(std::move(bytes));
        }
        pool.reset(); // some are still out
        {
            const std::lock_guard guard(lock);
            done = true;
        }
        threads.clear();
        pool = CPayloadPool::Make();
    }
}

TEST_F(PayloadPoolTest, ThreadsThatTakeAtTheSameTimeGetMemoryOfTheirOwn) {
    std::vector<std::jthread> threads;
    for (int value = 1; value <= 4; ++value) {
        threads.emplace_back([this, value] {
            for (int i = 0; i < 5000; ++i) {
                const auto bytes = pool->Take(100);
                std::memset(bytes.get(), value, 100);
                ASSERT_EQ(value, bytes[99]);
            }
        });
    }
}

// They lie close together, so each byte is looked at: the sanitizers see one piece of memory.
TEST_F(PayloadPoolTest, SmallPayloadsKeepTheirBytesWhileOthersComeAndGo) {
    std::mt19937 random(5);
    struct Payload {
        win::OwnedBytes bytes;
        std::vector<BYTE> content;
    };
    std::vector<Payload> out;
    for (int i = 0; i < 20000; ++i) {
        const auto size = static_cast<UINT32>(random() % (CPayloadChunk::kMaxCutBytes + 8));
        std::vector<BYTE> content(size, static_cast<BYTE>(random()));
        Payload payload{pool->Take(size), std::move(content)};
        ASSERT_NE(nullptr, payload.bytes);
        std::copy(payload.content.begin(), payload.content.end(), payload.bytes.get());
        out.push_back(std::move(payload));
        const size_t which = random() % out.size();
        const Payload& seen = out[which];
        ASSERT_TRUE(std::equal(seen.content.begin(), seen.content.end(), seen.bytes.get())) << i;
        if (out.size() > 300 || random() % 3 == 0) {
            out.erase(out.begin() + static_cast<std::ptrdiff_t>(which));
        }
    }
}

TEST_F(PayloadPoolTest, SmallPayloadsThatComeAndGoInTheirOrderNeedNoMoreMemory) {
    std::deque<win::OwnedBytes> out;
    size_t most = 0;
    for (int i = 0; i < 20000; ++i) {
        out.push_back(Take(62));
        if (out.size() > 1000) {
            out.pop_front();
        }
        most = std::max(most, pool->HeldBytes());
    }
    // What is still to be cut up, and what is partly back already.
    EXPECT_LE(most, size_t{1001} * 64 + 3 * CPayloadChunk::kMemoryBytes);
}

TEST_F(PayloadPoolTest, MemoryOfSmallPayloadsIsUsedAgainWhenTheLastOneIsBack) {
    constexpr size_t kPayloads = CPayloadChunk::kMemoryBytes / CPayloadChunk::kMaxCutBytes - 1;
    std::vector<win::OwnedBytes> out;
    for (size_t i = 0; i < kPayloads; ++i) {
        out.push_back(Take(CPayloadChunk::kMaxCutBytes));
    }
    const BYTE* const first = out.front().get();
    auto last = std::move(out.back());
    out.clear();
    auto elsewhere = Take(CPayloadChunk::kMaxCutBytes); // the first memory is still in use
    EXPECT_NE(first, elsewhere.get());
    EXPECT_EQ(0x5a, last[CPayloadChunk::kMaxCutBytes - 1]);
    last.reset();
    for (size_t i = 1; i < kPayloads; ++i) {
        out.push_back(Take(CPayloadChunk::kMaxCutBytes));
    }
    EXPECT_EQ(first, Take(CPayloadChunk::kMaxCutBytes).get());
}

} // namespace
