// CReservedIndex: a place between the head of a file and its clusters, empty while it is recorded, for cues that are
// known only at the end. What is written into it lies behind the place's own head until that one is written over, last
// and in one small write: whatever fails before, readers skip the place.
// Units: bytes, positions from the output's start. Owner: the file being written; the output is not owned.
// Threads: the writer's. Errors: what the output throws, std::bad_alloc.
#pragma once

#include "mkv/cut_recording.h"
#include "mkv/file_patcher.h"
#include "mkv/gathering_io.h"
#include "mkv/mkv_cues.h"
#include "mkv/writer_input.h"
#include "records/file_options.h"

namespace mkv {

class CReservedIndex {
  public:
    explicit CReservedIndex(CGatheringIO& io) : m_io(io) {}
    CReservedIndex(const CReservedIndex&) = delete;
    CReservedIndex& operator=(const CReservedIndex&) = delete;

    // What the options ask for with these tracks; 0: nothing.
    [[nodiscard]] static UINT64 bytesFor(const records::FileOptions& options, const TrackList& tracks);

    // Written where the output stands; when that fails, there is none, and what comes next takes its place.
    void write(UINT64 bytes);
    // Instead of that: it is there, perhaps with cues of a finalisation that did not come to its end.
    void resume(const CutRecording::IndexPlace& place);

    [[nodiscard]] bool isThere() const { return m_bytes > 0; }
    [[nodiscard]] UINT64 position() const { return m_position; }
    [[nodiscard]] UINT64 bytes() const { return m_bytes; }

    // Whether so many bytes go into it, with what is left.
    [[nodiscard]] bool takes(UINT64 bytes) const;
    // False when they did not arrive; then the place is what it was.
    [[nodiscard]] bool fill(CMkvCues& cues, CFilePatcher& patcher);
    // What a finalisation left there counts no more.
    void empty(CFilePatcher& patcher);

  private:
    CGatheringIO& m_io;
    UINT64 m_position = 0;
    UINT64 m_bytes = 0; // of the whole element
    bool m_isFilled = false;
};

} // namespace mkv
