// ByteSource: bytes that can be read at any position.
#pragma once

#include <span>

#include "win/platform.h"

namespace source {

class ByteSource {
  public:
    virtual ~ByteSource() = default;

    [[nodiscard]] virtual UINT64 Size() const = 0;
    // How many bytes were read: fewer than asked for at the end and after an error.
    [[nodiscard]] virtual size_t ReadAt(UINT64 offset, std::span<BYTE> buffer) const = 0;
};

} // namespace source
