#include "mkv/gathering_io.h"

#include <algorithm>

namespace {

// One write of a stream takes a 32-bit size; far above it a cluster is split rather than truncated.
constexpr size_t kMaxWriteBytes = size_t{1} << 30;
// A cluster has up to 4 MiB of payload; memory that one with a huge block took is given back.
constexpr size_t kMaxKeptBytes = size_t{8} << 20;

} // namespace

void CGatheringIO::flush() {
    for (size_t done = 0; done < m_gathered.size();) {
        const size_t size = std::min(m_gathered.size() - done, kMaxWriteBytes);
        m_target.writeFully(m_gathered.data() + done, size);
        done += size;
    }
    discard();
}

void CGatheringIO::discard() noexcept {
    if (m_gathered.capacity() > kMaxKeptBytes) {
        std::vector<BYTE>().swap(m_gathered);
    }
    m_gathered.clear();
}

void CGatheringIO::overwriteTail(std::span<const BYTE> bytes) {
    const size_t size = std::min(bytes.size(), m_gathered.size());
    std::copy_n(bytes.begin(), size, m_gathered.end() - static_cast<ptrdiff_t>(size));
}

uint32 CGatheringIO::read(void* buffer, size_t size) {
    flush();
    return m_target.read(buffer, size);
}

void CGatheringIO::setFilePointer(int64 offset, libebml::seek_mode mode) {
    flush();
    m_target.setFilePointer(offset, mode);
}

size_t CGatheringIO::write(const void* buffer, size_t size) {
    if (m_gathered.empty()) {
        m_startPosition = m_target.getFilePointer();
    }
    const auto* const bytes = static_cast<const BYTE*>(buffer);
    m_gathered.insert(m_gathered.end(), bytes, bytes + size);
    return size;
}

uint64 CGatheringIO::getFilePointer() {
    return m_gathered.empty() ? m_target.getFilePointer() : m_startPosition + m_gathered.size();
}
