#include "repair/recording_survey.h"

#include <algorithm>

#include <ebml/EbmlHead.h>
#include <ebml/EbmlSubHead.h>
#include <ebml/EbmlVoid.h>
#include <matroska/KaxAttachments.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxCues.h>
#include <matroska/KaxInfo.h>
#include <matroska/KaxSeekHead.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxTracks.h>

#include "mkv/cluster_rule.h"
#include "mkv/matroska_file.h"
#include "repair/block_walk.h"
#include "repair/refusal.h"
#include "sources/base/limits.h"
#include "sources/matroska/resync.h"
#include "sources/matroska/track_entry_reader.h"

namespace repair {

namespace {

using namespace libmatroska;
using matroska::Block;
using matroska::Element;
using matroska::IdOf;

constexpr UINT64 kElementIdBytes = 4;
// Far more than the muxer has settings for.
constexpr size_t kMaxTracks = 1000;
// Of these many the torn ones are looked for, and the time of the end.
constexpr size_t kLastClusters = 4;
// A day of 60 pictures a second that are all keyframes has 5 million.
constexpr size_t kMaxCuePoints = 8388608;
// More than this behind the last whole cluster is not simply one that was torn.
constexpr UINT64 kMaxTornBytes = UINT64{64} << 20;

constexpr const char* kAdvice = "; writing it anew may help: mkvmux -o NEW.mkv FILE";

[[noreturn]] void Refuse(const std::string& reason) {
    throw Refusal(reason + kAdvice);
}

} // namespace

Recording RecordingSurvey::Read() {
    m_recording.fileBytes = Size();
    ReadHead();
    if (m_recording.isFinished) {
        return std::move(m_recording);
    }
    const UINT64 position = ReadClusters(m_recording.cut.end);
    if (EndsFinished(position)) {
        m_recording.isFinished = true;
        return std::move(m_recording);
    }
    CheckTail(position);
    DropTornClusters();
    FindDuration();
    return std::move(m_recording);
}

void RecordingSurvey::ReadHead() {
    const auto head = m_reader.ElementAt(0, Size());
    if (!head || head->id != IdOf<libebml::EbmlHead>() || !head->whole || head->unknownSize) {
        throw Refusal("it is no Matroska file");
    }
    const auto segment = m_reader.ElementAt(head->end, Size());
    const UINT64 headBytes = kElementIdBytes + mkv::kSegmentSizeFieldBytes;
    if (!segment || segment->id != IdOf<KaxSegment>() || segment->data - segment->start != headBytes ||
        !IsPlace(segment->data, IdOf<KaxSeekHead>()) ||
        !IsPlace(segment->data + mkv::kPlaceBytes, IdOf<KaxInfo>())) {
        Refuse("it is no recording of this muxer, and may have no room for what is missing");
    }
    m_segment = *segment;
    m_recording.cut.segment = segment->start;
    m_recording.cut.tracks = segment->data + 2 * mkv::kPlaceBytes;
    const auto tracks = m_reader.ElementAt(m_recording.cut.tracks, Size());
    if (!tracks || tracks->id != IdOf<KaxTracks>() || tracks->unknownSize || !tracks->whole) {
        throw Refusal("it was cut off before its tracks were written; nothing can be saved");
    }
    const auto seekHead = m_reader.ElementAt(segment->data, Size());
    m_recording.isFinished = segment->whole && !segment->unknownSize && seekHead &&
                             seekHead->id == IdOf<KaxSeekHead>();
    ReadTracks(*tracks);
    m_recording.cut.end = tracks->end;
}

// Empty, or filled by a finalisation that did not come to its end, perhaps with no more than the first byte.
bool RecordingSurvey::IsPlace(UINT64 position, UINT32 content) const {
    BYTE first = 0;
    if (m_reader.Source().ReadAt(position, {&first, 1}) != 1) {
        return false;
    }
    constexpr int kFirstByteShift = 24; // of an identifier of four bytes
    const auto element = m_reader.ElementAt(position, Size());
    const bool isEmpty = element && element->id == IdOf<libebml::EbmlVoid>();
    return isEmpty ? element->end == position + mkv::kPlaceBytes : first == content >> kFirstByteShift;
}

void RecordingSurvey::ReadTracks(const Element& tracks) {
    UINT64 privateRoom = source::kMaxPrivateBytes;
    (void)m_reader.ForEachChild(tracks, [&](const Element& child) {
        if (child.id != IdOf<KaxTrackEntry>() || m_tracks.size() >= kMaxTracks) {
            return;
        }
        const matroska::Track track = matroska::ReadTrackEntry(m_reader, child, privateRoom);
        privateRoom -= std::min<UINT64>(privateRoom, track.codecPrivate.size());
        m_tracks[track.number] = {track.type, track.defaultDurationNs};
        if (track.type == UINT64{media::kTrackTypeVideo}) {
            m_cueTrack = track.number; // the last one, as while recording
        }
    });
}

// Where what is whole ends.
UINT64 RecordingSurvey::ReadClusters(UINT64 position) {
    while (const auto element = m_reader.ElementAt(position, Size())) {
        const bool isCluster = element->id == IdOf<KaxCluster>();
        const bool isAttachments = element->id == IdOf<KaxAttachments>() && m_recording.clusters == 0;
        if ((!isCluster && !isAttachments) || !element->whole || element->unknownSize) {
            break;
        }
        if (isCluster) {
            AddCluster(*element);
        } else {
            m_recording.cut.attachments = element->start;
        }
        position = element->end;
        m_recording.cut.end = position;
        m_progress(position, Size());
    }
    return position;
}

void RecordingSurvey::AddCluster(const Element& cluster) {
    auto& points = m_recording.cut.cuePoints;
    m_last.push_back({cluster, points.size()});
    if (m_last.size() > kLastClusters) {
        m_last.pop_front();
    }
    // A keyframe begins a cluster, but for one at time 0.
    AddCuePoints(cluster, m_recording.clusters == 0 && m_cueTrack != 0);
    ++m_recording.clusters;
    if (points.size() > kMaxCuePoints) {
        Refuse("it has more than " + std::to_string(kMaxCuePoints) + " clusters");
    }
}

void RecordingSurvey::AddCuePoints(const Element& cluster, bool ofAllBlocks) {
    (void)WalkCluster(m_reader, cluster, [&](const Block& block) {
        if (IsCuePoint(block)) {
            m_recording.cut.cuePoints.push_back({static_cast<UINT64>(block.ticks) * mkv::kTimecodeScaleNs, block.track,
                                                 cluster.start - m_segment.data});
        }
        return ofAllBlocks && m_recording.cut.cuePoints.size() <= kMaxCuePoints;
    });
}

// Without video each cluster gets a point, so that a player can seek.
bool RecordingSurvey::IsCuePoint(const Block& block) const {
    const auto track = m_tracks.find(block.track);
    if (track == m_tracks.end() || block.ticks < 0) {
        return false;
    }
    const bool isText = track->second.type == UINT64{media::kTrackTypeSubtitle};
    return m_cueTrack == 0 || isText || (block.track == m_cueTrack && block.keyframe);
}

// A file system may have made room for a cluster whose bytes never came.
void RecordingSurvey::DropTornClusters() {
    while (!m_last.empty() && !WalkCluster(m_reader, m_last.back().element, [](const Block&) { return true; })) {
        m_recording.cut.cuePoints.resize(m_last.back().pointsBefore);
        m_recording.cut.end = m_last.back().element.start;
        --m_recording.clusters;
        m_last.pop_back();
    }
}

// Whatever lies behind the last whole cluster is cut off, unless that may be more than one torn cluster.
void RecordingSurvey::CheckTail(UINT64 position) const {
    const auto element = m_reader.ElementAt(position, Size());
    if (element && element->id == IdOf<KaxCues>()) {
        position = element->end; // of an earlier try
    }
    const bool isTorn = element && element->id == IdOf<KaxCluster>();
    if ((isTorn && Size() - position <= kMaxTornBytes) || position >= Size()) {
        return;
    }
    if (matroska::FindCluster(m_reader, position + 1, Size()) < Size()) {
        Refuse("it is damaged at byte " + std::to_string(position) + ", with more of it behind");
    }
}

// What a Segment whose size does not fit its field looks like when it is finished.
bool RecordingSurvey::EndsFinished(UINT64 position) const {
    if (!m_segment.unknownSize || mkv::FitsSegmentSizeField(Size() - m_segment.data)) {
        return false;
    }
    const auto seekHead = m_reader.ElementAt(m_segment.data, Size());
    const auto cues = m_reader.ElementAt(position, Size());
    const bool hasCues = cues && cues->id == IdOf<KaxCues>() && cues->whole && cues->end == Size();
    return seekHead && seekHead->id == IdOf<KaxSeekHead>() && (hasCues || position == Size());
}

// The latest end of a block. Where none is said, a block lasts as long as its track says, or as the one before it did.
void RecordingSurvey::FindDuration() {
    std::map<UINT64, INT64> lastTicks;
    for (const Cluster& cluster : m_last) {
        (void)WalkCluster(m_reader, cluster.element, [&](const Block& block) {
            const auto track = m_tracks.find(block.track);
            if (track == m_tracks.end() || block.ticks < 0) {
                return true;
            }
            const auto last = lastTicks.find(block.track);
            const INT64 step = last == lastTicks.end() ? 0 : std::max<INT64>(block.ticks - last->second, 0);
            const UINT64 durationNs = block.durationTicks ? *block.durationTicks * mkv::kTimecodeScaleNs
                                      : track->second.defaultDurationNs != 0
                                          ? track->second.defaultDurationNs
                                          : static_cast<UINT64>(step) * mkv::kTimecodeScaleNs;
            lastTicks[block.track] = block.ticks;
            m_recording.durationNs = std::max(m_recording.durationNs,
                                              static_cast<UINT64>(block.ticks) * mkv::kTimecodeScaleNs + durationNs);
            return true;
        });
    }
}

} // namespace repair
