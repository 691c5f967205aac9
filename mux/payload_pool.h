// CPayloadPool: the memory of one stream's payloads, used again and again.
//
// Small payloads are cut from chunks, larger ones are blocks of their own.
// What is kept for later never makes the whole larger than the most that was in use at once, but for kSlackBytes; a
// block is at most an eighth larger than what was asked for when it was made, and by half when it is used again.
// Units: bytes. Owner: the stream, whose handle closes it: what is free goes at once, what is still out when it comes
// back, and the pool itself with the last of it, so a payload may outlive its stream.
// Threads: any. Errors: std::bad_alloc.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>

#include "mux/one_at_a_time.h"
#include "mux/payload_chunk.h"
#include "mux/return_stack.h"
#include "win/owned_bytes.h"

class CPayloadPool final : public win::ByteHome {
  public:
    struct Closer {
        void operator()(CPayloadPool* pool) const noexcept { pool->Close(); }
    };
    using Handle = std::unique_ptr<CPayloadPool, Closer>;

    static constexpr size_t kSlackBytes = 262144;

    [[nodiscard]] static Handle Make() { return Handle(new CPayloadPool); } // deleted by Close or the last TakeBack
    CPayloadPool(const CPayloadPool&) = delete;
    CPayloadPool& operator=(const CPayloadPool&) = delete;

    // At least so many bytes, not initialised.
    [[nodiscard]] win::OwnedBytes Take(UINT32 size);
    // win::ByteHome
    void TakeBack(BYTE* bytes) noexcept override;

    // ---- For tests, while no other thread is here ----

    // What is in use and what is kept, without the blocks' heads and what is still to be cut up.
    [[nodiscard]] size_t HeldBytes();

  private:
    // In front of the payload, which is therefore aligned as well as memory from the heap.
    struct alignas(std::max_align_t) Block {
        Block* next = nullptr;
        size_t sizeClass = 0;
    };

    // Eight sizes from each power of two to the next, from 64 bytes to all that 32 bits can say.
    static constexpr size_t kStepsLog2 = 3;
    static constexpr size_t kSmallestLog2 = 6;
    static constexpr size_t kClasses = ((32 - kSmallestLog2) << kStepsLog2) + 1;
    // A block may be reused for payloads of so many classes below its own.
    static constexpr size_t kReach = 4;

    CPayloadPool() = default;
    ~CPayloadPool() = default;

    [[nodiscard]] static size_t ClassOf(UINT32 size);
    [[nodiscard]] static size_t CapacityOf(size_t sizeClass);
    [[nodiscard]] static BYTE* BytesOf(Block& block) { return reinterpret_cast<BYTE*>(&block + 1); }
    [[nodiscard]] static Block* BlockOf(BYTE* bytes) { return reinterpret_cast<Block*>(bytes) - 1; }
    static void Free(Block* block) noexcept { ::operator delete(block); }

    void Close() noexcept;
    // The rest is for the one thread inside.
    [[nodiscard]] win::OwnedBytes Cut(UINT32 size);
    [[nodiscard]] win::OwnedBytes TakeBlock(UINT32 size);
    void CloseChunk() noexcept;
    [[nodiscard]] Block* TakeFree(size_t sizeClass);
    [[nodiscard]] Block* MakeBlock(size_t sizeClass);
    void Collect() noexcept;
    void Keep(Block* list) noexcept;
    void Trim(size_t mostFreeBytes) noexcept;

    COneAtATime m_taker;
    CPayloadChunk* m_chunk = nullptr; // that is being cut up; a block of this pool
    std::array<Block*, kClasses> m_free{};
    size_t m_freeBytes = 0;
    size_t m_usedBytes = 0; // out, or come back and not collected yet
    size_t m_mostUsedBytes = 0;
    INT64 m_out = 0; // blocks, counted as m_usedBytes

    CReturnStack<Block> m_returned;
    std::atomic<INT64> m_leftAfterClose{0}; // blocks still out; below zero while Close has not added its count
};
