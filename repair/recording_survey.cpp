#include "repair/recording_survey.h"

#include <algorithm>

#include <ebml/EbmlVoid.h>
#include <matroska/KaxAttachments.h>
#include <matroska/KaxChapters.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxCues.h>
#include <matroska/KaxTags.h>

#include "mkv/cluster_rule.h"
#include "mkv/file_form.h"
#include "repair/block_walk.h"
#include "repair/end_time.h"
#include "repair/refusal.h"
#include "sources/matroska/resync.h"

namespace repair {

namespace {

using namespace libmatroska;
using matroska::Block;
using matroska::Element;
using matroska::IdOf;

// Of these many the torn ones are looked for, and the time of the end.
constexpr size_t kLastClusters = 4;
// A day of 48 pictures a second that are all keyframes; each takes 48 bytes while they are written.
constexpr size_t kMaxCuePoints = 4194304;
// More than this behind the last whole cluster is not simply one that was torn.
constexpr UINT64 kMaxTornBytes = UINT64{64} << 20;

[[noreturn]] void Refuse(const std::string& reason) {
    throw Refusal(reason + kAdvice);
}

} // namespace

Recording RecordingSurvey::Read() {
    m_recording.fileBytes = Size();
    if (m_head.hasSeekHead && m_head.segment.whole && !m_head.segment.unknownSize) {
        m_recording.isFinished = true;
        return std::move(m_recording);
    }
    m_recording.cut.profile = m_head.profile;
    m_recording.cut.segment = m_head.segment.start;
    m_recording.cut.tracks = m_head.tracks.start;
    m_recording.cut.end = m_head.tracks.end;
    const UINT64 position = ReadClusters(m_recording.cut.end);
    if (EndsFinished(position)) {
        m_recording.isFinished = true;
        return std::move(m_recording);
    }
    CheckTail(position);
    DropTornClusters();
    if (m_recording.clusters == 0 && m_recording.cut.end < Size()) {
        Refuse("it holds no whole cluster");
    }
    FindDuration();
    return std::move(m_recording);
}

// Where what is whole ends.
UINT64 RecordingSurvey::ReadClusters(UINT64 position) {
    while (const auto element = m_reader.ElementAt(position, Size())) {
        const bool isCluster = element->id == IdOf<KaxCluster>();
        if (!element->whole || element->unknownSize) {
            break;
        }
        if (isCluster) {
            AddCluster(*element);
        } else if (!TakeHeadElement(*element) && !TakeIndexPlace(*element)) {
            break;
        }
        position = element->end;
        m_recording.cut.end = position;
        m_progress(position, Size());
    }
    return position;
}

// What may stand between the tracks and the first cluster, each once.
bool RecordingSurvey::TakeHeadElement(const Element& element) {
    mkv::CutRecording& cut = m_recording.cut;
    auto& place = element.id == IdOf<KaxAttachments>() ? cut.attachments
                  : element.id == IdOf<KaxChapters>()  ? cut.chapters
                                                       : cut.tags;
    const bool isKnown =
        element.id == IdOf<KaxAttachments>() || element.id == IdOf<KaxChapters>() || element.id == IdOf<KaxTags>();
    if (!isKnown || m_recording.clusters > 0) {
        return false;
    }
    place = element.start;
    return true;
}

// Cues that are there already may be of an earlier state; they are written anew, into the whole place.
bool RecordingSurvey::TakeIndexPlace(const Element& element) {
    const bool isCues = element.id == IdOf<KaxCues>();
    const bool isVoid = element.id == IdOf<libebml::EbmlVoid>();
    if (m_recording.clusters > 0 || m_head.profile != MuxProfile_Strict || (!isCues && !isVoid)) {
        return false;
    }
    auto& place = m_recording.cut.indexPlace;
    const UINT64 bytes = element.end - element.start;
    if (isVoid && place && place->isFilled && place->position + place->bytes == element.start) {
        place->bytes += bytes; // what the cues leave of it
    } else if (isCues || element.data - element.start == mkv::CutRecording::IndexPlace::kHeadBytes) {
        place = mkv::CutRecording::IndexPlace{element.start, bytes, isCues};
    }
    return true;
}

void RecordingSurvey::AddCluster(const Element& cluster) {
    auto& points = m_recording.cut.cuePoints;
    m_last.push_back({cluster, points.size()});
    if (m_last.size() > kLastClusters) {
        m_last.pop_front();
    }
    AddCuePoints(cluster, m_recording.clusters == 0);
    ++m_recording.clusters;
    if (points.size() > kMaxCuePoints) {
        Refuse("it has more than " + std::to_string(kMaxCuePoints) + " clusters");
    }
}

void RecordingSurvey::AddCuePoints(const Element& cluster, bool isFirst) {
    (void)WalkCluster(m_reader, cluster, [&](const Block& block) {
        if (m_head.trackOf.contains(block.track) && m_cueRule->IsPoint(block)) {
            AddCuePoint(block, cluster);
        }
        return m_cueRule->GoesOnBehind(block, isFirst) && m_recording.cut.cuePoints.size() <= kMaxCuePoints;
    });
}

void RecordingSurvey::AddCuePoint(const Block& block, const Element& cluster) {
    mkv::CutRecording::CuePoint point;
    point.timeNs = static_cast<UINT64>(block.ticks) * mkv::kTimecodeScaleNs;
    point.track = block.track;
    point.clusterPosition = cluster.start - m_head.segment.data;
    if (m_head.profile == MuxProfile_Strict) {
        point.relativePosition = block.start - cluster.data;
        point.durationNs = std::min<UINT64>(block.durationTicks.value_or(0), kMaxTicks) * mkv::kTimecodeScaleNs;
    }
    m_recording.cut.cuePoints.push_back(point);
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
    if (!m_head.segment.unknownSize || mkv::FormOf(m_head.profile).fitsSegmentSizeField(Size() - m_head.segment.data)) {
        return false;
    }
    const auto cues = m_reader.ElementAt(position, Size());
    const bool hasCues = cues && cues->id == IdOf<KaxCues>() && cues->whole && cues->end == Size();
    return m_head.hasSeekHead && (hasCues || position == Size());
}

void RecordingSurvey::FindDuration() {
    EndTime end;
    for (const Cluster& cluster : m_last) {
        (void)WalkCluster(m_reader, cluster.element, [&](const Block& block) {
            if (const auto track = m_head.trackOf.find(block.track); track != m_head.trackOf.end()) {
                end.Add(block, track->second.defaultDurationNs);
            }
            return true;
        });
    }
    m_recording.cut.endNs = end.LatestNs();
}

} // namespace repair
