// CPayloadChunk: a piece of a pool's memory that small payloads are cut from, one behind the other; it is their home,
// and goes back as a whole with the last of them.
//
// Units: bytes. Owner: its payloads, and whoever cuts until it closes; it lies at the beginning of its memory.
// Threads: one cuts and closes; payloads come back from any. Errors: none.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

#include "mux/cache_line.h"
#include "win/owned_bytes.h"

class CPayloadChunk final : public win::ByteHome {
  public:
    // Of the memory that a chunk is made in.
    static constexpr UINT32 kMemoryBytes = 16384;
    // What is larger would leave too much of a chunk's end unused.
    static constexpr UINT32 kMaxCutBytes = kMemoryBytes / 8;

    [[nodiscard]] static CPayloadChunk& MakeIn(win::OwnedBytes memory) {
        BYTE* const place = memory.get();
        return *new (place) CPayloadChunk(std::move(memory));
    }
    CPayloadChunk(const CPayloadChunk&) = delete;
    CPayloadChunk& operator=(const CPayloadChunk&) = delete;

    // Null when there is no room left.
    [[nodiscard]] BYTE* Cut(UINT32 size) noexcept {
        const size_t bytes = std::max((size_t{size} + kAlignment - 1) / kAlignment * kAlignment, kAlignment);
        if (bytes > kMemoryBytes - sizeof(CPayloadChunk) - m_cutBytes) {
            return nullptr;
        }
        BYTE* const payload = reinterpret_cast<BYTE*>(this + 1) + m_cutBytes;
        m_cutBytes += bytes;
        ++m_payloads;
        return payload;
    }
    // Not used by the caller any more.
    void Close() noexcept { Leave(kOpen - m_payloads); }
    // win::ByteHome
    void TakeBack(BYTE* /*bytes*/) noexcept override { Leave(1); }

    // For tests: what nothing was cut from, and the chunk's own members.
    [[nodiscard]] size_t UncutBytes() const { return kMemoryBytes - m_cutBytes; }

  private:
    static constexpr size_t kAlignment = 8;
    static constexpr size_t kOpen = kMemoryBytes; // more than all payloads, so that it stays while it is open

    explicit CPayloadChunk(win::OwnedBytes memory) : m_memory(std::move(memory)) {}
    ~CPayloadChunk() = default; // never called: nothing is left to do when the memory goes

    void Leave(size_t holders) noexcept {
        if (m_out.fetch_sub(holders, std::memory_order_acq_rel) == holders) {
            const win::OwnedBytes memory = std::move(m_memory);
        }
    }

    win::OwnedBytes m_memory; // in which this lies
    size_t m_cutBytes = 0;
    size_t m_payloads = 0;
    [[maybe_unused]] CacheLineGap m_gap{};
    std::atomic<size_t> m_out{kOpen}; // payloads, counted in when the chunk closes
};
