// CMkvCues: the cue points of the file. A block is announced with AddBlockBlob and becomes a cue point when its
// cluster is rendered; this adds the way back for a cluster that was not.
// Owner: the file being written. Threads: the writer's. Errors: std::bad_alloc.
#pragma once

#include <matroska/KaxCues.h>
#include <matroska/KaxCuesData.h>

class CMkvCues : public libmatroska::KaxCues {
  public:
    // Forgets the announced blocks without a position; they may be gone already.
    void forgetPending() noexcept { myTempReferences.clear(); }
    // Forgets them, and every cue point beyond the first so many.
    void rollBackTo(size_t count) noexcept;
};
