// CPacketQueue: a first-in first-out queue between one thread that appends and one that takes, without a lock.
//
// The packets lie in chunks, whose list grows at the end and is used up at the front; a chunk that was used up is kept
// for the end. What the two threads write lies on cache lines of its own.
// Owner: a stream; it owns what is queued. Threads: MakeRoom and Append on the producer, one at a time; Front and
// TakeFront on the consumer; Count on any. Errors: std::bad_alloc from MakeRoom alone.
#pragma once

#include <array>
#include <atomic>
#include <memory>

#include "mux/cache_line.h"
#include "mux/mux_inter_packet.h"

class CPacketQueue {
  public:
    CPacketQueue();
    ~CPacketQueue();
    CPacketQueue(const CPacketQueue&) = delete;
    CPacketQueue& operator=(const CPacketQueue&) = delete;

    // Before each Append.
    void MakeRoom();
    // Sequentially consistent: whoever announces first that it will sleep and then finds no packet here can rely on
    // the producer seeing the announcement afterwards.
    void Append(std::unique_ptr<CMuxInterPacket> packet) noexcept;

    // Null when there is none.
    [[nodiscard]] CMuxInterPacket* Front();
    // There is one.
    [[nodiscard]] std::unique_ptr<CMuxInterPacket> TakeFront();

    // On the consumer also sequentially consistent.
    [[nodiscard]] size_t Count() const {
        const UINT64 taken = m_taken.load(std::memory_order_acquire); // first, so that it is the smaller one
        return static_cast<size_t>(m_appended.load(std::memory_order_seq_cst) - taken);
    }

  private:
    static constexpr size_t kChunkPackets = 255; // with the link to the next one 2 KiB

    struct Chunk {
        std::array<std::unique_ptr<CMuxInterPacket>, kChunkPackets> packets;
        Chunk* next = nullptr; // written before the first packet behind it is published
    };

    [[nodiscard]] bool HasFront();

    std::atomic<UINT64> m_appended{0}; // packets; written by the producer
    Chunk* m_last;                     // the producer's
    size_t m_lastUsed = 0;             // the producer's: places used in it

    [[maybe_unused]] CacheLineGap m_gap{};
    std::atomic<UINT64> m_taken{0}; // packets; written by the consumer
    UINT64 m_appendedSeen = 0;      // the consumer's
    Chunk* m_first;                 // the consumer's
    size_t m_firstUsed = 0;         // the consumer's: places taken from it

    [[maybe_unused]] CacheLineGap m_otherGap{};
    std::atomic<Chunk*> m_spare{nullptr};
};
