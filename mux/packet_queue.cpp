#include "mux/packet_queue.h"

#include <utility>

CPacketQueue::CPacketQueue() : m_last(std::make_unique<Chunk>().release()), m_first(m_last) {}

CPacketQueue::~CPacketQueue() {
    const std::unique_ptr<Chunk> spare(m_spare.load(std::memory_order_acquire));
    while (m_first != nullptr) {
        const std::unique_ptr<Chunk> chunk(m_first);
        m_first = chunk->next;
    }
}

void CPacketQueue::MakeRoom() {
    if (m_lastUsed < kChunkPackets) {
        return;
    }
    std::unique_ptr<Chunk> chunk(m_spare.exchange(nullptr, std::memory_order_acquire));
    if (!chunk) {
        chunk = std::make_unique<Chunk>();
    }
    m_last->next = chunk.get();
    m_last = chunk.release(); // the list's from here
    m_lastUsed = 0;
}

void CPacketQueue::Append(std::unique_ptr<CMuxInterPacket> packet) noexcept {
    m_last->packets[m_lastUsed++] = std::move(packet);
    m_appended.store(m_appended.load(std::memory_order_relaxed) + 1, std::memory_order_seq_cst);
}

// Looks at the producer's cache line only when all that was seen there has been taken.
bool CPacketQueue::HasFront() {
    const UINT64 taken = m_taken.load(std::memory_order_relaxed);
    if (m_appendedSeen == taken) {
        m_appendedSeen = m_appended.load(std::memory_order_seq_cst);
    }
    return m_appendedSeen != taken;
}

CMuxInterPacket* CPacketQueue::Front() {
    if (!HasFront()) {
        return nullptr;
    }
    if (m_firstUsed == kChunkPackets) {
        std::unique_ptr<Chunk> used(std::exchange(m_first, m_first->next));
        used->next = nullptr;
        m_firstUsed = 0;
        const std::unique_ptr<Chunk> older(m_spare.exchange(used.release(), std::memory_order_acq_rel));
    }
    return m_first->packets[m_firstUsed].get();
}

std::unique_ptr<CMuxInterPacket> CPacketQueue::TakeFront() {
    if (m_firstUsed == kChunkPackets) {
        (void)Front(); // steps over the end of the chunk
    }
    auto packet = std::move(m_first->packets[m_firstUsed++]);
    const UINT64 taken = m_taken.load(std::memory_order_relaxed) + 1;
    m_taken.store(taken, std::memory_order_release);
    if (m_appendedSeen - taken > 1 && m_firstUsed + 1 < kChunkPackets) {
        FetchCacheLine(m_first->packets[m_firstUsed + 1].get()); // it will be the front when the next one is taken
    }
    return packet;
}
