#include "mux/packet_pool.h"

#include "mux/packet_slab.h"

CPacketPool::~CPacketPool() {
    Delete(m_free);
    Delete(m_new);
    Delete(m_returned.Close());
}

std::unique_ptr<CMuxInterPacket> CPacketPool::Take(INT32 streamIndex) {
    const COneAtATime::Entry entry(m_taker);
    if (!entry.IsInside()) {
        return std::make_unique<CMuxInterPacket>(streamIndex);
    }
    CMuxInterPacket*& list = FirstList();
    std::unique_ptr<CMuxInterPacket> packet(list);
    list = packet->next;
    packet->next = nullptr;
    packet->streamIndex = streamIndex;
    return packet;
}

// The list to take from, which is not empty: what came back is in the cache rather than what was never used.
CMuxInterPacket*& CPacketPool::FirstList() {
    if (m_free == nullptr) {
        m_free = m_returned.TakeAll();
    }
    if (m_free != nullptr) {
        return m_free;
    }
    if (m_new == nullptr) {
        m_new = CPacketSlab::Make();
    }
    return m_new;
}

void CPacketPool::GiveBack(std::unique_ptr<CMuxInterPacket> packet) noexcept {
    packet->Empty();
    if (m_returned.Push(*packet)) {
        (void)packet.release(); // the stack's from here
    }
}

void CPacketPool::Delete(CMuxInterPacket* list) {
    while (list != nullptr) {
        const std::unique_ptr<CMuxInterPacket> packet(list);
        list = packet->next;
    }
}
