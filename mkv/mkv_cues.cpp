#include "mkv/mkv_cues.h"

#include <utility>

#include "mkv/cluster_rule.h"
#include "mkv/element_values.h"

namespace mkv {

namespace {

using libmatroska::KaxCueClusterPosition;
using libmatroska::KaxCuePoint;
using libmatroska::KaxCueTime;
using libmatroska::KaxCueTrack;
using libmatroska::KaxCueTrackPositions;

} // namespace

void CMkvCues::announce(UINT64 timeNs, UINT64 track) {
    m_points.push_back({timeNs / kTimecodeScaleNs, 0, track});
}

void CMkvCues::keepAnnounced(UINT64 clusterPosition) noexcept {
    for (; m_keptPoints < m_points.size(); ++m_keptPoints) {
        m_points[m_keptPoints].clusterPosition = clusterPosition;
    }
}

void CMkvCues::restorePoints() {
    dropAnnounced();
    const std::vector<Point> points = std::exchange(m_points, {});
    m_keptPoints = 0;
    for (const Point& kept : points) {
        auto& point = libebml::AddNewChild<KaxCuePoint>(*this);
        SetChild<KaxCueTime>(point, kept.time);
        auto& positions = libebml::AddNewChild<KaxCueTrackPositions>(point);
        SetChild<KaxCueTrack>(positions, kept.track);
        SetChild<KaxCueClusterPosition>(positions, kept.clusterPosition);
    }
}

} // namespace mkv
