#include "sources/base/buffered_source.h"

#include <algorithm>

namespace source {

size_t BufferedSource::CopyHeld(UINT64 offset, std::span<BYTE> buffer) const {
    if (offset < m_start || offset - m_start >= m_held) {
        return 0;
    }
    const auto first = static_cast<size_t>(offset - m_start);
    const size_t count = std::min(buffer.size(), m_held - first);
    std::copy_n(m_window.begin() + static_cast<std::ptrdiff_t>(first), count, buffer.begin());
    return count;
}

// What the window holds is not read again, and what is as large as it goes past it.
size_t BufferedSource::ReadAt(UINT64 offset, std::span<BYTE> buffer) const {
    const size_t done = CopyHeld(offset, buffer);
    if (done == buffer.size()) {
        return done;
    }
    offset += done;
    buffer = buffer.subspan(done);
    if (buffer.size() >= m_window.size()) {
        return done + m_source->ReadAt(offset, buffer);
    }
    m_start = offset;
    m_held = m_source->ReadAt(offset, m_window);
    return done + CopyHeld(offset, buffer);
}

} // namespace source
