// StreamSource: the bytes of a stream, as the readers of files take them.
//
// Units: bytes. Owner: the stream stays the caller's. Threads: one at a time; the stream's position is moved.
// Errors: what cannot be read is not there.
#pragma once

#include "sources/base/byte_source.h"

namespace repair {

class StreamSource final : public source::ByteSource {
  public:
    // The size is asked for once.
    explicit StreamSource(IStream& stream);

    [[nodiscard]] UINT64 Size() const override { return m_size; }
    [[nodiscard]] size_t ReadAt(UINT64 offset, std::span<BYTE> buffer) const override;

  private:
    IStream& m_stream;
    UINT64 m_size = 0;
};

} // namespace repair
