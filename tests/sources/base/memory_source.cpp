#include "tests/sources/base/memory_source.h"

#include <algorithm>

namespace test_source {

size_t MemorySource::ReadAt(UINT64 offset, std::span<BYTE> buffer) const {
    if (offset >= m_bytes.size()) {
        return 0;
    }
    const size_t count = std::min(buffer.size(), m_bytes.size() - static_cast<size_t>(offset));
    std::copy_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(offset), count, buffer.begin());
    return count;
}

} // namespace test_source
