// The queue between two threads, and the pool that its packets come from.
#include "mux/packet_queue.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "mux/packet_pool.h"
#include "mux/packet_slab.h"
#include "tests/mux/packet_helpers.h"

namespace {

void Append(CPacketQueue& queue, INT64 start) {
    queue.MakeRoom();
    queue.Append(MakePacket(0, start));
}

TEST(PacketQueue, GivesThePacketsInTheirOrderAcrossManyChunks) {
    CPacketQueue queue;
    EXPECT_EQ(nullptr, queue.Front());
    INT64 taken = 0;
    for (INT64 i = 0; i < 3000; ++i) {
        Append(queue, i);
        if (i % 3 == 0) {
            ASSERT_EQ(taken, queue.Front()->start);
            ASSERT_EQ(taken++, queue.TakeFront()->start);
        }
        ASSERT_EQ(static_cast<size_t>(i + 1 - taken), queue.Count());
    }
    while (taken < 3000) {
        ASSERT_EQ(taken++, queue.TakeFront()->start);
    }
    EXPECT_EQ(nullptr, queue.Front());
    EXPECT_EQ(0u, queue.Count());
    Append(queue, 7);
    EXPECT_EQ(7, queue.Front()->start);
}

TEST(PacketQueue, TwoThreadsLoseNothing) {
    constexpr INT64 kPackets = 100000;
    CPacketQueue queue;
    std::jthread producer([&] {
        for (INT64 i = 0; i < kPackets; ++i) {
            Append(queue, i);
        }
    });
    for (INT64 i = 0; i < kPackets;) {
        if (queue.Front() == nullptr) {
            std::this_thread::yield();
            continue;
        }
        const auto packet = queue.TakeFront();
        ASSERT_EQ(i++, packet->start);
        ASSERT_EQ(0, packet->data[0]);
    }
    EXPECT_EQ(0u, queue.Count());
}

TEST(PacketPool, APacketThatCameBackIsUsedAgainAndIsAsNew) {
    CPacketPool pool;
    auto packet = pool.Take(3);
    const CMuxInterPacket* const first = packet.get();
    packet->start = 1;
    packet->stop = 2;
    packet->data = std::make_unique<BYTE[]>(5);
    packet->size = 5;
    packet->syncPoint = true;
    packet->hasTime = true;
    packet->endOfStream = true;
    packet->muxerFlag = 9;
    pool.GiveBack(std::move(packet));
    packet = pool.Take(4);
    EXPECT_EQ(first, packet.get());
    EXPECT_EQ(0, packet->start);
    EXPECT_EQ(0, packet->stop);
    EXPECT_EQ(nullptr, packet->data);
    EXPECT_EQ(0u, packet->size);
    EXPECT_FALSE(packet->syncPoint);
    EXPECT_FALSE(packet->hasTime);
    EXPECT_EQ(4, packet->streamIndex);
    EXPECT_FALSE(packet->endOfStream);
    EXPECT_EQ(0, packet->muxerFlag);
}

TEST(PacketPool, NoPacketIsGivenTwice) {
    CPacketPool pool;
    std::vector<std::unique_ptr<CMuxInterPacket>> packets;
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 10; ++i) {
            packets.push_back(pool.Take(0));
        }
        std::set<const CMuxInterPacket*> seen;
        for (const auto& packet : packets) {
            seen.insert(packet.get());
        }
        EXPECT_EQ(packets.size(), seen.size());
        for (int i = 0; i < 7; ++i) { // some stay out, some come back
            pool.GiveBack(std::move(packets.back()));
            packets.pop_back();
        }
    }
}

// The sanitizers tell of memory that was left behind or touched after it went.
TEST(PacketPool, PacketsOutliveThePoolAndMayBeDeletedInAnyOrder) {
    std::vector<std::unique_ptr<CMuxInterPacket>> packets;
    {
        CPacketPool pool;
        for (int i = 0; i < 200; ++i) { // of more than one slab
            packets.push_back(pool.Take(i));
        }
        pool.GiveBack(std::move(packets[100]));
        packets[7].reset();
    }
    for (size_t i = 0; i < packets.size(); i += 2) {
        packets[i].reset();
    }
    for (size_t i = 1; i < packets.size(); i += 2) {
        if (packets[i]) {
            EXPECT_EQ(static_cast<INT32>(i), packets[i]->streamIndex);
        }
    }
    std::jthread([rest = std::move(packets)] {}).join();
}

TEST(PacketPool, APacketOfNoPoolTakesTheWayOfOneThatHasOne) {
    CPacketPool pool;
    auto alone = std::make_unique<CMuxInterPacket>(5);
    const CMuxInterPacket* const first = alone.get();
    auto second = pool.Take(1);
    pool.GiveBack(std::move(alone));
    std::set<const CMuxInterPacket*> seen;
    std::vector<std::unique_ptr<CMuxInterPacket>> packets;
    for (size_t i = 0; i < CPacketSlab::kPackets; ++i) {
        packets.push_back(pool.Take(2));
        seen.insert(packets.back().get());
    }
    EXPECT_EQ(1u, seen.count(first)); // what came back comes before memory that is new
}

} // namespace
