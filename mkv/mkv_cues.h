// CMkvCues: the cue points of the file. A block is announced when it is added to its cluster and becomes a cue point
// when that one is written. A point is three numbers; the library's element, forty times as large, is made of one after
// the other while they are rendered.
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
    // For one more point, which is announced without throwing then.
    void makeRoom();
    // A block of the open cluster; nothing is announced when it throws.
    void announce(UINT64 timeNs, UINT64 track);
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
        UINT64 time; // in ticks of the timestamp scale
        UINT64 clusterPosition;
        UINT64 track;
    };

    std::vector<Point> m_points; // behind those that are kept, those of the open cluster
    size_t m_keptPoints = 0;
};

} // namespace mkv
