// CMkvCues: the cue points of the file. A block is announced when it is added to its cluster and becomes a cue point
// when that one is written; until the file is finished the point is three numbers.
// Units: times in nanoseconds, positions in bytes from the segment's content.
// Owner: the file being written. Threads: the writer's. Errors: std::bad_alloc.
#pragma once

#include <vector>

#include <matroska/KaxCues.h>
#include <matroska/KaxCuesData.h>

#include "win/platform.h"

namespace mkv {

class CMkvCues : public libmatroska::KaxCues {
  public:
    // A block of the open cluster; nothing is announced when it throws.
    void announce(UINT64 timeNs, UINT64 track);
    // The cluster was written there: the blocks announced are points.
    void keepAnnounced(UINT64 clusterPosition) noexcept;
    // It was not.
    void dropAnnounced() noexcept { m_points.resize(m_keptPoints); }

    [[nodiscard]] size_t pointCount() const { return m_keptPoints; }
    // For the end of the file: the points as elements again, ready to be rendered.
    void restorePoints();

  private:
    // An element of the library is forty times as large, and many of them among the clusters' buffers would tear the
    // heap into pieces over the hours.
    struct Point {
        UINT64 time; // in ticks of the timestamp scale
        UINT64 clusterPosition;
        UINT64 track;
    };

    std::vector<Point> m_points; // behind those that are kept, those of the open cluster
    size_t m_keptPoints = 0;
};

} // namespace mkv
