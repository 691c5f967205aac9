#include "mkv/mkv_cues.h"

#include <algorithm>
#include <array>

#include "mkv/cluster_rule.h"
#include "mkv/element_values.h"

namespace mkv {

namespace {

constexpr size_t kFirstPoints = 16;

using libmatroska::KaxCueClusterPosition;
using libmatroska::KaxCueDuration;
using libmatroska::KaxCuePoint;
using libmatroska::KaxCueRelativePosition;
using libmatroska::KaxCueTime;
using libmatroska::KaxCueTrack;
using libmatroska::KaxCueTrackPositions;

} // namespace

// One cue point after the other in the library's own form; one object for those that say the same elements.
class CMkvCues::CPointElement {
  public:
    KaxCuePoint& of(const Point& kept) {
        KaxCuePoint& element = m_points[(kept.relativePosition > 0 ? 1U : 0U) + (kept.duration > 0 ? 2U : 0U)];
        SetChild<KaxCueTime>(element, kept.time);
        auto& positions = libebml::GetChild<KaxCueTrackPositions>(element);
        SetChild<KaxCueTrack>(positions, kept.track);
        SetChild<KaxCueClusterPosition>(positions, kept.clusterPosition);
        if (kept.relativePosition > 0) {
            SetChild<KaxCueRelativePosition>(positions, kept.relativePosition);
        }
        if (kept.duration > 0) {
            SetChild<KaxCueDuration>(positions, kept.duration);
        }
        return element;
    }

  private:
    std::array<KaxCuePoint, 4> m_points;
};

void CMkvCues::makeRoom(size_t points) {
    if (m_points.capacity() - m_points.size() < points) {
        m_points.reserve(std::max({2 * m_points.size(), kFirstPoints, m_points.size() + points}));
    }
}

void CMkvCues::announce(const CuePointFacts& point) {
    m_points.push_back(
        {point.timeNs / kTimecodeScaleNs, 0, point.track, point.relativePosition, point.durationNs / kTimecodeScaleNs});
}

void CMkvCues::keepAnnounced(UINT64 clusterPosition) noexcept {
    if (m_keepsNone) {
        dropAnnounced();
        return;
    }
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
        KaxCuePoint& point = element.of(m_points[i]);
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
        size += element.of(m_points[i]).Render(io, withDefaults, false, force);
    }
    return size;
}

} // namespace mkv
