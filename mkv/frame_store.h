// CFrameStore: the payload bytes of the current cluster's blocks, one allocation a block; what append returned stays
// where it is until reset.
// Units: bytes. Owner: the open cluster. Threads: the writer's. Errors: std::bad_alloc, nothing is added then.
#pragma once

#include <span>
#include <vector>

#include "win/platform.h"

namespace mkv {

class CFrameStore {
  public:
    // Copies the bytes; the result is the copy.
    BYTE* append(std::span<const BYTE> bytes) { return append(std::vector<BYTE>(bytes.begin(), bytes.end())); }
    // Takes over bytes that are a copy already.
    BYTE* append(std::vector<BYTE>&& bytes) {
        m_frames.push_back(std::move(bytes));
        m_totalBytes += m_frames.back().size();
        return m_frames.back().data();
    }
    void reset() noexcept {
        m_frames.clear();
        m_totalBytes = 0;
    }
    [[nodiscard]] UINT64 totalBytes() const { return m_totalBytes; }

  private:
    std::vector<std::vector<BYTE>> m_frames;
    UINT64 m_totalBytes = 0;
};

} // namespace mkv
