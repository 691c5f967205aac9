#include "mkv/mkv_cues.h"

#include <utility>

#include "mkv/element_values.h"

namespace mkv {

namespace {

using libmatroska::KaxCueClusterPosition;
using libmatroska::KaxCuePoint;
using libmatroska::KaxCueTime;
using libmatroska::KaxCueTrack;
using libmatroska::KaxCueTrackPositions;

template <typename Element>
UINT64 Get(libebml::EbmlMaster& parent) {
    return static_cast<libebml::EbmlUInteger&>(libebml::GetChild<Element>(parent));
}

} // namespace

void CMkvCues::keepRendered() {
    for (libebml::EbmlElement* const element : GetElementList()) {
        auto& point = static_cast<KaxCuePoint&>(*element); // the list holds nothing else
        auto& positions = libebml::GetChild<KaxCueTrackPositions>(point);
        m_points.push_back(
            {Get<KaxCueTime>(point), Get<KaxCueClusterPosition>(positions), Get<KaxCueTrack>(positions)});
    }
    dropRendered();
}

void CMkvCues::dropRendered() noexcept {
    forgetPending();
    auto& elements = GetElementList();
    while (!elements.empty()) {
        delete elements.back(); // the list owns its elements through plain pointers
        elements.pop_back();
    }
}

void CMkvCues::restorePoints() {
    const std::vector<Point> points = std::exchange(m_points, {});
    for (const Point& kept : points) {
        auto& point = libebml::AddNewChild<KaxCuePoint>(*this);
        SetChild<KaxCueTime>(point, kept.time);
        auto& positions = libebml::AddNewChild<KaxCueTrackPositions>(point);
        SetChild<KaxCueTrack>(positions, kept.track);
        SetChild<KaxCueClusterPosition>(positions, kept.clusterPosition);
    }
}

} // namespace mkv
