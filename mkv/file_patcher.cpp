#include "mkv/file_patcher.h"

#include <algorithm>
#include <utility>

namespace mkv {

namespace {

constexpr int kPatchTries = 2;

// Where both have bytes, those of the part become the others.
void ReplaceIn(LostBytes& part, UINT64 position, std::span<const BYTE> bytes) {
    const UINT64 begin = std::max<UINT64>(part.position, position);
    const UINT64 end = std::min<UINT64>(part.position + part.bytes.size(), position + bytes.size());
    if (begin < end) {
        const auto source = bytes.subspan(static_cast<size_t>(begin - position), static_cast<size_t>(end - begin));
        std::ranges::copy(source, part.bytes.begin() + static_cast<ptrdiff_t>(begin - part.position));
    }
}

} // namespace

void CFilePatcher::flushHeadPart() {
    const UINT64 end = m_io.getFilePointer();
    m_io.flush();
    if (auto lost = m_io.takeLost()) {
        m_lostHeadParts.push_back(std::move(*lost));
        m_io.moveTo(end);
    }
}

// A part that was lost would bring back what is written over now.
void CFilePatcher::overwriteInHead(UINT64 position, std::span<const BYTE> bytes) {
    for (LostBytes& part : m_lostHeadParts) {
        ReplaceIn(part, position, bytes);
    }
    m_io.overwrite(position, bytes);
    if (auto lost = m_io.takeLost()) {
        m_lostHeadParts.push_back(std::move(*lost));
    }
}

void CFilePatcher::writeLostHeadParts() {
    for (const LostBytes& part : std::exchange(m_lostHeadParts, {})) {
        m_io.bringTo(part.position);
        m_io.write(part.bytes.data(), part.bytes.size());
        m_io.flush();
    }
    (void)m_io.takeLost();
    m_io.bringTo(m_end);
}

// Nobody is told of a write that fails now, so it is made once more. A seek that is refused ends all patches: what goes
// elsewhere would destroy the file.
bool CFilePatcher::arrives(const std::function<void()>& write) {
    for (int i = 0; i < kPatchTries; ++i) {
        m_io.bringTo(m_end);
        write();
        m_io.flush();
        if (!m_io.takeLost()) {
            return true;
        }
    }
    return false;
}

} // namespace mkv
