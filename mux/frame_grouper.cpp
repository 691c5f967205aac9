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

CFrameGrouper::Packets CFrameGrouper::Add(std::unique_ptr<CMuxInterPacket> packet, const AM_MEDIA_TYPE& type) {
    const win::LockGuard lock(m_lock);
    m_audioClock.Stamp(*packet, type);
    Packets ready;
    if (packet->hasTime) {
        ready = TakePending();
    }
    const UINT64 memory = MemoryOf(*packet);
    m_pending.push_back(std::move(packet));
    m_pendingBytes += memory;
    if (m_pending.size() > 1 && m_pendingBytes > m_maxFrameBytes) {
        return TakePending();
    }
    Merge(ready);
    return ready;
}

CFrameGrouper::Packets CFrameGrouper::TakeAll() {
    const win::LockGuard lock(m_lock);
    return TakePending();
}

void CFrameGrouper::Clear() {
    const win::LockGuard lock(m_lock);
    TakePending();
    m_audioClock.Reset();
}

CFrameGrouper::Packets CFrameGrouper::TakePending() {
    m_pendingBytes = 0;
    return std::exchange(m_pending, {});
}
