// CClusterBytes: the rendered blocks of the open cluster, in their order. Block heads and small payloads lie in one
// buffer, which is used again for the next cluster; a large payload that may be taken over stays where it is.
// Units: bytes. Owner: the open cluster. Threads: the writer's.
// Errors: std::bad_alloc; append has added nothing then.
#pragma once

#include <algorithm>
#include <span>
#include <vector>

#include "win/owned_bytes.h"
#include "win/platform.h"

namespace mkv {

// A block's payload. With an owner, which holds the bytes, it may be taken over instead of copied.
struct FrameBytes {
    std::span<const BYTE> bytes;
    win::OwnedBytes* owner = nullptr;
};

class CClusterBytes {
  public:
    // From about here on a write of its own costs less than a copy, into a file of the system's as into memory.
    static constexpr size_t kMinTakenOverBytes = size_t{32} << 10;
    static constexpr size_t kMaxHeadBytes = 32; // of the cluster

    // One block: what stands in front of its payload, the payload, what stands behind it. Copies all, or takes the
    // payload over, whose owner then holds nothing.
    void append(std::span<const BYTE> head, const FrameBytes& frame, std::span<const BYTE> tail);
    // Forgets everything; what was taken over goes back.
    void reset() noexcept;

    [[nodiscard]] UINT64 payloadBytes() const { return m_payloadBytes; }
    // With the heads and tails.
    [[nodiscard]] UINT64 totalBytes() const;

    // Where the head of the block to come will lie, for overwrite; what was appended stays there.
    [[nodiscard]] size_t nextPlace() const { return std::max(m_buffer.size(), kMaxHeadBytes); }
    void overwrite(size_t place, std::span<const BYTE> bytes);

    using Parts = std::vector<std::span<const BYTE>>;
    // Everything in its order behind the cluster's head, in as few pieces as it lies in; valid until the next append or
    // reset.
    [[nodiscard]] const Parts& partsBehind(std::span<const BYTE> clusterHead);

  private:
    struct Taken {
        size_t place; // so much of the buffer stands in front of it
        std::span<const BYTE> bytes;
        win::OwnedBytes owner;
    };

    void makeRoom(size_t bytes);
    void insert(std::span<const BYTE> bytes) { m_buffer.insert(m_buffer.end(), bytes.begin(), bytes.end()); }

    std::vector<BYTE> m_buffer; // begins with the room for the cluster's head, which is known last; empty at first
    std::vector<Taken> m_taken;
    Parts m_parts;
    UINT64 m_payloadBytes = 0;
    UINT64 m_takenBytes = 0;
};

} // namespace mkv
