#include "mkv/file_patcher.h"

#include <utility>

namespace mkv {

namespace {

constexpr int kPatchTries = 2;

} // namespace

void CFilePatcher::flushHeadPart() {
    const UINT64 end = m_io.getFilePointer();
    m_io.flush();
    if (auto lost = m_io.takeLost()) {
        m_lostHeadParts.push_back(std::move(*lost));
        m_io.moveTo(end);
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
