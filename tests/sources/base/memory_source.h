// MemorySource: a ByteSource over bytes of its own.
#pragma once

#include <string_view>
#include <vector>

#include "sources/base/byte_source.h"

namespace test_source {

class MemorySource final : public source::ByteSource {
  public:
    explicit MemorySource(std::string_view bytes) : m_bytes(bytes.begin(), bytes.end()) {}
    explicit MemorySource(std::vector<BYTE> bytes) : m_bytes(std::move(bytes)) {}
    [[nodiscard]] UINT64 Size() const override { return m_bytes.size(); }
    [[nodiscard]] size_t ReadAt(UINT64 offset, std::span<BYTE> buffer) const override;

  private:
    std::vector<BYTE> m_bytes;
};

} // namespace test_source
