// CPacketSlab: the memory of many packets in one piece, which costs one allocation and goes with the last of them.
//
// A packet of it is deleted like any other.
// Owner: its packets. Threads: any. Errors: std::bad_alloc.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>

#include "mux/mux_inter_packet.h"

class CPacketSlab {
  public:
    static constexpr size_t kPackets = 64;
    static constexpr size_t kHeadBytes = sizeof(void*); // of a packet: a pointer to its slab

    // All of its packets, new and chained by `next`; they are the caller's.
    [[nodiscard]] static CMuxInterPacket* Make();
    CPacketSlab(const CPacketSlab&) = delete;
    CPacketSlab& operator=(const CPacketSlab&) = delete;

    // For CMuxInterPacket: one packet was deleted.
    void Leave() noexcept;
    // What stands in front of each packet, and the place behind that.
    [[nodiscard]] static CPacketSlab*& SlabBefore(void* packet) { return static_cast<CPacketSlab**>(packet)[-1]; }
    [[nodiscard]] static void* PacketBehind(CPacketSlab*& slab) { return &slab + 1; }

  private:
    struct Place {
        CPacketSlab* slab;
        std::array<std::byte, sizeof(CMuxInterPacket)> packet;
    };
    static_assert(alignof(CMuxInterPacket) <= alignof(CPacketSlab*));

    CPacketSlab() = default;
    ~CPacketSlab() = default;

    std::array<Place, kPackets> m_places;
    std::atomic<size_t> m_alive{kPackets};
};
