// CPacketPool: the packet objects of one stream, used again and again.
//
// Owner: the stream; a packet belongs to whoever holds it, and may also simply be deleted.
// Threads: any. Errors: std::bad_alloc.
#pragma once

#include <memory>

#include "mux/cache_line.h"
#include "mux/mux_inter_packet.h"
#include "mux/one_at_a_time.h"
#include "mux/return_stack.h"

class CPacketPool {
  public:
    CPacketPool() = default;
    ~CPacketPool();
    CPacketPool(const CPacketPool&) = delete;
    CPacketPool& operator=(const CPacketPool&) = delete;

    // Empty, with that stream index.
    [[nodiscard]] std::unique_ptr<CMuxInterPacket> Take(INT32 streamIndex);
    // Its data goes where that came from.
    void GiveBack(std::unique_ptr<CMuxInterPacket> packet) noexcept;

  private:
    [[nodiscard]] CMuxInterPacket*& FirstList();
    static void Delete(CMuxInterPacket* list);

    COneAtATime m_taker;
    CMuxInterPacket* m_free = nullptr; // of whoever is in m_taker
    CMuxInterPacket* m_new = nullptr;  // its, too; none of them was given out yet
    [[maybe_unused]] CacheLineGap m_gap{};
    CReturnStack<CMuxInterPacket> m_returned; // what has come back since m_free was filled
    [[maybe_unused]] CacheLineGap m_otherGap{};
};
