#include "mkv/cluster_bytes.h"

#include <algorithm>
#include <utility>

namespace mkv {

namespace {

// A cluster has up to 4 MiB of payload; memory that one with a huge block took is given back.
constexpr size_t kMaxKeptBufferBytes = size_t{8} << 20;
constexpr size_t kFirstRoomBytes = size_t{64} << 10;
// The buffer doubles up to here, and grows by so much from there: what is too much of it stays small.
constexpr size_t kMaxGrowthBytes = size_t{1} << 20;

} // namespace

void CClusterBytes::append(std::span<const BYTE> head, const FrameBytes& frame, std::span<const BYTE> tail) {
    const bool isTakenOver = frame.owner != nullptr && frame.bytes.size() >= kMinTakenOverBytes;
    makeRoom(head.size() + tail.size() + (isTakenOver ? 0 : frame.bytes.size()));
    if (isTakenOver) {
        const size_t place = m_buffer.size() + head.size();
        m_taken.push_back({place, frame.bytes, nullptr}); // the last that may throw
        m_taken.back().owner = std::move(*frame.owner);
        m_takenBytes += frame.bytes.size();
    }
    insert(head);
    if (!isTakenOver) {
        insert(frame.bytes);
    }
    insert(tail);
    m_payloadBytes += frame.bytes.size();
}

void CClusterBytes::makeRoom(size_t bytes) {
    const size_t needed = std::max(m_buffer.size(), kMaxHeadBytes) + bytes;
    if (needed > m_buffer.capacity()) {
        const size_t growth = std::clamp(m_buffer.capacity(), kFirstRoomBytes, kMaxGrowthBytes);
        m_buffer.reserve(std::max(needed, m_buffer.capacity() + growth));
    }
    if (m_buffer.empty()) {
        m_buffer.resize(kMaxHeadBytes);
    }
}

void CClusterBytes::reset() noexcept {
    if (m_buffer.capacity() > kMaxKeptBufferBytes) {
        std::vector<BYTE>().swap(m_buffer);
    }
    m_buffer.clear();
    m_taken.clear();
    m_parts.clear();
    m_payloadBytes = 0;
    m_takenBytes = 0;
}

void CClusterBytes::overwrite(size_t place, std::span<const BYTE> bytes) {
    std::copy(bytes.begin(), bytes.end(), m_buffer.begin() + static_cast<ptrdiff_t>(place));
}

UINT64 CClusterBytes::totalBytes() const {
    return std::max(m_buffer.size(), kMaxHeadBytes) - kMaxHeadBytes + m_takenBytes;
}

const CClusterBytes::Parts& CClusterBytes::partsBehind(std::span<const BYTE> clusterHead) {
    makeRoom(0);
    size_t start = kMaxHeadBytes - clusterHead.size();
    std::copy(clusterHead.begin(), clusterHead.end(), m_buffer.begin() + static_cast<ptrdiff_t>(start));
    const std::span<const BYTE> buffer(m_buffer);
    m_parts.clear();
    for (const Taken& taken : m_taken) {
        m_parts.push_back(buffer.subspan(start, taken.place - start));
        m_parts.push_back(taken.bytes);
        start = taken.place;
    }
    if (start < buffer.size()) {
        m_parts.push_back(buffer.subspan(start));
    }
    return m_parts;
}

} // namespace mkv
