#include "mkv/mkv_cues.h"

#include <algorithm>

#include "mkv/cluster_rule.h"
#include "mkv/element_values.h"

namespace mkv {

namespace {

constexpr size_t kFirstPoints = 16;

using libmatroska::KaxCueClusterPosition;
using libmatroska::KaxCuePoint;
using libmatroska::KaxCueTime;
using libmatroska::KaxCueTrack;
using libmatroska::KaxCueTrackPositions;

// One cue point after the other in the library's own form.
class CPointElement {
  public:
    KaxCuePoint& of(UINT64 time, UINT64 track, UINT64 clusterPosition) {
        SetChild<KaxCueTime>(m_point, time);
        auto& positions = libebml::GetChild<KaxCueTrackPositions>(m_point);
        SetChild<KaxCueTrack>(positions, track);
        SetChild<KaxCueClusterPosition>(positions, clusterPosition);
        return m_point;
    }

  private:
    KaxCuePoint m_point;
};

} // namespace

void CMkvCues::makeRoom() {
    if (m_points.size() == m_points.capacity()) {
        m_points.reserve(std::max(2 * m_points.size(), kFirstPoints));
    }
}

void CMkvCues::announce(UINT64 timeNs, UINT64 track) {
    m_points.push_back({timeNs / kTimecodeScaleNs, 0, track});
}

void CMkvCues::keepAnnounced(UINT64 clusterPosition) noexcept {
    for (; m_keptPoints < m_points.size(); ++m_keptPoints) {
        m_points[m_keptPoints].clusterPosition = clusterPosition;
    }
}

filepos_t CMkvCues::Render(libebml::IOCallback& io, bool withDefaults) {
    std::sort(m_points.begin(), m_points.begin() + static_cast<ptrdiff_t>(m_keptPoints),
              [](const Point& a, const Point& b) { return a.time < b.time; });
    return KaxCues::Render(io, withDefaults);
}

filepos_t CMkvCues::UpdateSize(bool withDefaults, bool force) {
    CPointElement element;
    filepos_t size = 0;
    for (size_t i = 0; i < m_keptPoints; ++i) {
        const Point& kept = m_points[i];
        KaxCuePoint& point = element.of(kept.time, kept.track, kept.clusterPosition);
        point.UpdateSize(withDefaults, force);
        size += point.ElementSize(withDefaults);
    }
    SetSize_(size);
    return size;
}

filepos_t CMkvCues::RenderData(libebml::IOCallback& io, bool force, bool withDefaults) {
    CPointElement element;
    filepos_t size = 0;
    for (size_t i = 0; i < m_keptPoints; ++i) {
        const Point& kept = m_points[i];
        size += element.of(kept.time, kept.track, kept.clusterPosition).Render(io, withDefaults, false, force);
    }
    return size;
}

} // namespace mkv
