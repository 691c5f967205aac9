// BufferedSource: a window on another source, so that many small reads become few large ones.
//
// Owner: holds the other source. Threads: one at a time, although reading is const.
#pragma once

#include <memory>
#include <vector>

#include "sources/base/byte_source.h"

namespace source {

class BufferedSource final : public ByteSource {
  public:
    static constexpr size_t kWindowBytes = size_t{64} * 1024;

    explicit BufferedSource(std::unique_ptr<ByteSource> source, size_t windowBytes = kWindowBytes)
        : m_source(std::move(source)), m_window(windowBytes) {}

    [[nodiscard]] UINT64 Size() const override { return m_source->Size(); }
    [[nodiscard]] size_t ReadAt(UINT64 offset, std::span<BYTE> buffer) const override;

  private:
    // How many of the first bytes the window holds.
    [[nodiscard]] size_t CopyHeld(UINT64 offset, std::span<BYTE> buffer) const;

    std::unique_ptr<ByteSource> m_source;
    mutable std::vector<BYTE> m_window;
    mutable UINT64 m_start = 0; // position of the window
    mutable size_t m_held = 0;  // bytes in it
};

} // namespace source
