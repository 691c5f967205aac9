#include "mux/frame_grouper.h"

#include <cstring>
#include <utility>

namespace {

UINT64 MemoryOf(const CMuxInterPacket& packet) {
    return UINT64{packet.size} + sizeof(CMuxInterPacket);
}

// Leaves one packet: the first, with the data of all.
void Merge(CFrameGrouper::Packets& frame) {
    if (frame.size() < 2) {
        return;
    }
    size_t size = 0;
    for (const auto& packet : frame) {
        size += packet->size;
    }
    auto data = std::make_unique_for_overwrite<BYTE[]>(size);
    size_t used = 0;
    for (const auto& packet : frame) {
        if (packet->size > 0) {
            std::memcpy(data.get() + used, packet->data.get(), packet->size);
            used += packet->size;
        }
    }
    frame.front()->data = std::move(data);
    frame.front()->size = static_cast<UINT32>(size);
    frame.resize(1);
}

} // namespace

CFrameGrouper::Packets&& CFrameGrouper::Add(std::unique_ptr<CMuxInterPacket> packet, const AM_MEDIA_TYPE& type) {
    m_audioClock.Stamp(*packet, type);
    m_ready.clear();
    if (packet->hasTime) {
        MovePendingToReady();
    }
    Hold(std::move(packet));
    if (m_pending.size() > 1 && m_pendingBytes > m_maxFrameBytes) {
        MovePendingToReady();
    } else {
        Merge(m_ready);
    }
    return std::move(m_ready);
}

CFrameGrouper::Packets CFrameGrouper::TakeAll() {
    m_pendingBytes = 0;
    return std::exchange(m_pending, {});
}

void CFrameGrouper::Clear() {
    (void)TakeAll();
    (void)std::exchange(m_ready, {});
    m_audioClock.Reset();
}

void CFrameGrouper::Hold(std::unique_ptr<CMuxInterPacket> packet) {
    const UINT64 memory = MemoryOf(*packet);
    m_pending.push_back(std::move(packet));
    m_pendingBytes += memory;
}

// m_ready is empty; the two lists change places, so that neither is made anew for every packet.
void CFrameGrouper::MovePendingToReady() {
    m_pendingBytes = 0;
    m_pending.swap(m_ready);
}
