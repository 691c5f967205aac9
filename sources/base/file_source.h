// FileSource: the bytes of a file on disk, which others may read meanwhile.
//
// Threads: one at a time. Errors: Open; a read that fails gives no bytes.
#pragma once

#include "sources/base/byte_source.h"
#include "win/handle.h"
#include "win/wide_string.h"

namespace source {

class FileSource final : public ByteSource {
  public:
    [[nodiscard]] HRESULT Open(const WideString& path);

    [[nodiscard]] UINT64 Size() const override { return m_size; }
    [[nodiscard]] size_t ReadAt(UINT64 offset, std::span<BYTE> buffer) const override;

  private:
    win::FileHandle m_file;
    UINT64 m_size = 0;
};

} // namespace source
