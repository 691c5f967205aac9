#include "mux/payload_pool.h"

#include <algorithm>
#include <bit>
#include <new>
#include <utility>

win::OwnedBytes CPayloadPool::Take(UINT32 size) {
    const COneAtATime::Entry entry(m_taker);
    if (!entry.IsInside()) {
        return std::make_unique_for_overwrite<BYTE[]>(size);
    }
    return size <= CPayloadChunk::kMaxCutBytes ? Cut(size) : TakeBlock(size);
}

win::OwnedBytes CPayloadPool::Cut(UINT32 size) {
    BYTE* bytes = m_chunk == nullptr ? nullptr : m_chunk->Cut(size);
    if (bytes == nullptr) {
        CloseChunk(); // first: it may be the next one
        m_chunk = &CPayloadChunk::MakeIn(TakeBlock(CPayloadChunk::kMemoryBytes));
        bytes = m_chunk->Cut(size);
    }
    return {bytes, win::ByteReturn(*m_chunk)};
}

void CPayloadPool::CloseChunk() noexcept {
    if (m_chunk != nullptr) {
        std::exchange(m_chunk, nullptr)->Close();
    }
}

win::OwnedBytes CPayloadPool::TakeBlock(UINT32 size) {
    const size_t sizeClass = ClassOf(size);
    Block* block = TakeFree(sizeClass);
    if (block == nullptr) {
        Collect();
        block = TakeFree(sizeClass);
    }
    if (block == nullptr) {
        block = MakeBlock(sizeClass);
    }
    m_usedBytes += CapacityOf(block->sizeClass);
    m_mostUsedBytes = std::max(m_mostUsedBytes, m_usedBytes);
    ++m_out;
    return {BytesOf(*block), win::ByteReturn(*this)};
}

void CPayloadPool::TakeBack(BYTE* bytes) noexcept {
    Block* const block = BlockOf(bytes);
    if (m_returned.Push(*block)) {
        return;
    }
    Free(block);
    if (m_leftAfterClose.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete this; // nobody else knows it any more
    }
}

void CPayloadPool::Close() noexcept {
    CloseChunk();
    Keep(m_returned.Close());
    Trim(0);
    // What comes back from here on is counted down, perhaps before it is counted in.
    if (m_leftAfterClose.fetch_add(m_out, std::memory_order_acq_rel) + m_out == 0) {
        delete this;
    }
}

size_t CPayloadPool::HeldBytes() {
    Collect();
    return m_usedBytes + m_freeBytes - (m_chunk == nullptr ? 0 : m_chunk->UncutBytes());
}

size_t CPayloadPool::ClassOf(UINT32 size) {
    if (size <= UINT32{1} << kSmallestLog2) {
        return 0;
    }
    const auto log2 = static_cast<size_t>(std::bit_width(size - 1)) - 1; // of the power of two below
    const size_t step = log2 - kStepsLog2;                               // how far apart the sizes are there
    return ((log2 - kSmallestLog2) << kStepsLog2) + ((size - 1 - (UINT32{1} << log2)) >> step) + 1;
}

size_t CPayloadPool::CapacityOf(size_t sizeClass) {
    if (sizeClass == 0) {
        return size_t{1} << kSmallestLog2;
    }
    const size_t log2 = kSmallestLog2 + ((sizeClass - 1) >> kStepsLog2);
    const size_t steps = ((sizeClass - 1) & ((size_t{1} << kStepsLog2) - 1)) + 1;
    return (size_t{1} << log2) + (steps << (log2 - kStepsLog2));
}

CPayloadPool::Block* CPayloadPool::TakeFree(size_t sizeClass) {
    const size_t end = std::min(sizeClass + kReach + 1, kClasses);
    for (size_t i = sizeClass; i < end; ++i) {
        if (m_free[i] != nullptr) {
            Block* const block = std::exchange(m_free[i], m_free[i]->next);
            m_freeBytes -= CapacityOf(i);
            return block;
        }
    }
    return nullptr;
}

CPayloadPool::Block* CPayloadPool::MakeBlock(size_t sizeClass) {
    const size_t capacity = CapacityOf(sizeClass);
    const size_t used = m_usedBytes + capacity;
    Trim(std::max(m_mostUsedBytes, used) - used + kSlackBytes);
    auto* const block = new (::operator new(sizeof(Block) + capacity)) Block; // freed by Free
    block->sizeClass = sizeClass;
    return block;
}

void CPayloadPool::Collect() noexcept {
    Keep(m_returned.TakeAll());
}

void CPayloadPool::Keep(Block* list) noexcept {
    while (list != nullptr) {
        Block* const block = std::exchange(list, list->next);
        const size_t capacity = CapacityOf(block->sizeClass);
        block->next = std::exchange(m_free[block->sizeClass], block);
        m_freeBytes += capacity;
        m_usedBytes -= capacity;
        --m_out;
    }
}

// The largest go first: they are the fewest.
void CPayloadPool::Trim(size_t mostFreeBytes) noexcept {
    for (size_t i = kClasses; i-- > 0 && m_freeBytes > mostFreeBytes;) {
        while (m_free[i] != nullptr && m_freeBytes > mostFreeBytes) {
            Block* const block = std::exchange(m_free[i], m_free[i]->next);
            m_freeBytes -= CapacityOf(i);
            Free(block);
        }
    }
}
