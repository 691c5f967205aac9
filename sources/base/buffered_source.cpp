#include "sources/base/buffered_source.h"

#include <algorithm>

namespace source {

namespace {

constexpr size_t kWindowBytes = size_t{64} * 1024;

} // namespace

BufferedSource::BufferedSource(std::unique_ptr<ByteSource> source)
    : m_source(std::move(source)), m_window(kWindowBytes) {}

bool BufferedSource::Holds(UINT64 offset, size_t count) const {
    return offset >= m_start && offset - m_start <= m_held && count <= m_held - (offset - m_start);
}

size_t BufferedSource::ReadAt(UINT64 offset, std::span<BYTE> buffer) const {
    if (buffer.size() >= m_window.size()) {
        return m_source->ReadAt(offset, buffer);
    }
    if (!Holds(offset, buffer.size())) {
        m_start = offset;
        m_held = m_source->ReadAt(offset, m_window);
    }
    const size_t count = std::min(buffer.size(), m_held - static_cast<size_t>(offset - m_start));
    std::copy_n(m_window.begin() + static_cast<std::ptrdiff_t>(offset - m_start), count, buffer.begin());
    return count;
}

} // namespace source
