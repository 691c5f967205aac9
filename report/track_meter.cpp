#include "report/track_meter.h"

#include <algorithm>

#include "media/track_type.h"

namespace report {

namespace {

constexpr size_t kMostTracks = 1000;
constexpr size_t kMostGaps = 200; // of a track
// A pause is a gap from so many usual distances of the track's blocks on, and from this long on.
constexpr UINT64 kGapDistances = 4;
constexpr UINT64 kLeastGapNs = 500'000'000;
// A time beyond three decades comes from damage.

std::string FormatOf(const matroska::Track& track) {
    if (track.type == UINT64{media::kTrackTypeVideo}) {
        return std::to_string(track.video.pixelWidth) + " × " + std::to_string(track.video.pixelHeight);
    }
    if (track.type == UINT64{media::kTrackTypeAudio}) {
        const double most = 1e9;
        const auto hertz = static_cast<UINT64>(std::clamp(track.audio.samplingFrequency, 0.0, most));
        return std::to_string(hertz) + " Hz, " + std::to_string(track.audio.channels) +
               (track.audio.channels == 1 ? " channel" : " channels");
    }
    return {};
}

} // namespace

void TrackMeters::Declare(const matroska::Track& track) {
    if (track.number == 0 || m_meters.contains(track.number) || m_facts.tracks.size() >= kMostTracks) {
        return;
    }
    TrackReport report;
    report.number = track.number;
    report.type = track.type;
    report.codecId = track.codecId;
    report.name = track.name;
    report.language = track.languageTag.empty() ? track.language : track.languageTag;
    report.format = FormatOf(track);
    report.row = m_facts.timeline.AddRow();
    Meter meter;
    meter.track = m_facts.tracks.size();
    meter.isText = track.IsSubtitle();
    meter.durationTicks = track.defaultDurationNs / m_facts.scaleNs;
    m_facts.tracks.push_back(std::move(report));
    m_meters[track.number] = meter;
}

TrackMeters::Meter* TrackMeters::MeterOf(UINT64 number) {
    auto found = m_meters.find(number);
    if (found == m_meters.end()) {
        matroska::Track undeclared;
        undeclared.number = number;
        Declare(undeclared);
        found = m_meters.find(number);
    }
    return found == m_meters.end() ? nullptr : &found->second;
}

void TrackMeters::Add(const matroska::Block& block) {
    Meter* const meter = block.ticks > static_cast<INT64>(kMaxTicks) ? nullptr : MeterOf(block.track);
    if (meter == nullptr) {
        return;
    }
    TrackReport& track = m_facts.tracks[meter->track];
    const auto start = static_cast<UINT64>(std::max<INT64>(block.ticks, 0));
    const UINT64 length = std::min<UINT64>(block.durationTicks.value_or(meter->durationTicks), kMaxTicks);
    Cell& cell = m_facts.timeline.At(track.row, start);
    const UINT64 lag = LagOf(block.track, start);
    cell.bytes += block.size;
    cell.blocks += 1;
    cell.keys += block.keyframe ? 1 : 0;
    cell.lag = std::max(cell.lag, lag);
    MeasureGap(*meter, track, start, start + length);
    track.blocks += 1;
    track.keyframes += block.keyframe ? 1 : 0;
    track.bytes += block.size;
    track.lag = std::max(track.lag, lag);
    if (!meter->isText) {
        NoteLatest(block.track, start);
    }
}

// Pauses of subtitles are none.
void TrackMeters::MeasureGap(Meter& meter, TrackReport& track, UINT64 start, UINT64 end) {
    if (!meter.hasBegun) {
        meter.hasBegun = true;
        track.begin = meter.latestStart = meter.latestEnd = start;
    } else if (start > meter.latestEnd && !meter.isText) {
        const UINT64 usual = (meter.latestStart - track.begin) / std::max<UINT64>(track.blocks, 1);
        const UINT64 least = std::max(kLeastGapNs / m_facts.scaleNs, kGapDistances * usual);
        if (start - meter.latestEnd > least) {
            ++track.gapCount;
            if (track.gaps.size() < kMostGaps) {
                track.gaps.push_back({meter.latestEnd, start});
            }
        }
    }
    track.begin = std::min(track.begin, start);
    meter.latestStart = std::max(meter.latestStart, start);
    meter.latestEnd = std::max(meter.latestEnd, end);
    track.end = meter.latestEnd;
}

// How far the others are ahead where this block stands in the file.
UINT64 TrackMeters::LagOf(UINT64 number, UINT64 start) const {
    const UINT64 others = number == m_latestTrack ? m_latestOfOthers : m_latest;
    return others > start ? others - start : 0;
}

void TrackMeters::NoteLatest(UINT64 number, UINT64 start) {
    if (number == m_latestTrack) {
        m_latest = std::max(m_latest, start);
    } else if (start > m_latest) {
        m_latestOfOthers = m_latest;
        m_latest = start;
        m_latestTrack = number;
    } else {
        m_latestOfOthers = std::max(m_latestOfOthers, start);
    }
}

} // namespace report
