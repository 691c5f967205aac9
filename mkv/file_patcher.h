// CFilePatcher: brings what is written into the head of a file and behind its clusters, where a lost write must not be
// one: it is made again.
// Units: bytes from the output's start. Owner: the file being written; the output is not owned.
// Threads: the writer's. Errors: what the output throws, as when it refuses to go where a patch belongs;
// std::bad_alloc.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "mkv/gathering_io.h"

namespace mkv {

class CFilePatcher {
  public:
    explicit CFilePatcher(CGatheringIO& io) : m_io(io) {}
    CFilePatcher(const CFilePatcher&) = delete;
    CFilePatcher& operator=(const CFilePatcher&) = delete;

    // A part of the head that was gathered. One that was lost keeps its place, so that all behind it lies where it
    // would, and is kept for writeLostHeadParts: without it the file cannot be read.
    void flushHeadPart();

    // Writes over a part of the head while more is written behind it. What does not arrive is kept, too.
    void overwriteInHead(UINT64 position, std::span<const BYTE> bytes);

    // From here on the file ends where the output stands, and patches are made.
    void begin() { m_end = m_io.getFilePointer(); }
    [[nodiscard]] UINT64 end() const { return m_end; }

    void writeLostHeadParts();
    // Makes a write that begins at the end, unless it seeks, until it arrives; false when it did not.
    [[nodiscard]] bool arrives(const std::function<void()>& write);
    // Behind all that the file has; false when it did not arrive.
    template <typename Element>
    [[nodiscard]] bool append(Element& element) {
        UINT64 size = 0;
        const bool hasArrived = arrives([&] { size = element.Render(m_io, false); });
        m_end += hasArrived ? size : 0;
        return hasArrived;
    }

  private:
    CGatheringIO& m_io;
    UINT64 m_end = 0; // without what is patched
    std::vector<LostBytes> m_lostHeadParts;
};

} // namespace mkv
