// CMkvCues: the cue points of the file. A block is announced with AddBlockBlob and becomes a cue point when its
// cluster is rendered; until the file is finished the point is then kept as three numbers.
// Units: times in ticks of the timestamp scale, positions in bytes from the segment's content.
// Owner: the file being written. Threads: the writer's. Errors: std::bad_alloc.
#pragma once

#include <vector>

#include <matroska/KaxCues.h>
#include <matroska/KaxCuesData.h>

#include "win/platform.h"

namespace mkv {

class CMkvCues : public libmatroska::KaxCues {
  public:
    // Forgets the announced blocks without a position; they may be gone already.
    void forgetPending() noexcept { myTempReferences.clear(); }
    // After a cluster was rendered: keeps its points. An element of the library is forty times as large, and many of
    // them among the clusters' buffers would tear the heap into pieces over the hours.
    void keepRendered();
    // After a cluster was not: forgets its points and what was announced of it.
    void dropRendered() noexcept;

    [[nodiscard]] size_t pointCount() const { return m_points.size(); }
    // For the end of the file: the points as elements again, ready to be rendered.
    void restorePoints();

  private:
    struct Point {
        UINT64 time;
        UINT64 clusterPosition;
        UINT64 track;
    };

    std::vector<Point> m_points;
};

} // namespace mkv
