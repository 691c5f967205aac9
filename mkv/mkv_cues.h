// CMkvCues: the cue points of the file. A block is announced when it is added to its cluster and becomes a cue point
// when that one is written. A point is a few numbers; the library's element, forty times as large, is made of one after
// the other while they are rendered.
// Units: times in nanoseconds, positions in bytes from the segment's content.
// Owner: the file being written. Threads: the writer's. Errors: std::bad_alloc.
#pragma once

#include <vector>

#include <matroska/KaxCues.h>
#include <matroska/KaxCuesData.h>

#include "win/platform.h"

namespace mkv {

// A point with what the strict profile says of it. 0 is not said.
struct CuePointFacts {
    UINT64 timeNs = 0;
    UINT64 track = 0;
    UINT64 relativePosition = 0; // of the block's element, from the cluster's data
    UINT64 durationNs = 0;
};

class CMkvCues : public libmatroska::KaxCues {
  public:
    // The file gets none: what is announced is forgotten once its cluster is written.
    void keepNone() noexcept { m_keepsNone = true; }
    // For so many more points, which are announced without throwing then.
    void makeRoom(size_t points = 1);
    // A block of the open cluster; nothing is announced when it throws.
    void announce(const CuePointFacts& point);
    void announce(UINT64 timeNs, UINT64 track) { announce({timeNs, track, 0, 0}); }
    // The cluster was written there: the blocks announced are points.
    void keepAnnounced(UINT64 clusterPosition) noexcept;
    // It was not.
    void dropAnnounced() noexcept { m_points.resize(m_keptPoints); }

    [[nodiscard]] size_t pointCount() const { return m_keptPoints; }

    // In the library's order: by time, and where that is equal as its sort leaves them.
    filepos_t Render(libebml::IOCallback& io, bool withDefaults = false);
    // libebml::EbmlMaster, of the points that are kept. What is default is not rendered.
    bool IsDefaultValue() const override { return m_keptPoints == 0; }
    filepos_t UpdateSize(bool withDefaults = false, bool force = false) override;
    filepos_t RenderData(libebml::IOCallback& io, bool force, bool withDefaults = false) override;

  private:
    struct Point {
        UINT64 time; // in ticks of the timestamp scale, as is the duration
        UINT64 clusterPosition;
        UINT64 track;
        UINT64 relativePosition;
        UINT64 duration;
    };
    class CPointElement;

    std::vector<Point> m_points; // behind those that are kept, those of the open cluster
    size_t m_keptPoints = 0;
    bool m_keepsNone = false;
};

} // namespace mkv
