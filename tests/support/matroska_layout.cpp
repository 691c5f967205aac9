#include "tests/support/matroska_layout.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace test_support {

namespace {

using namespace ebml_id;

constexpr uint64_t kDefaultTimestampScaleNs = 1000000;
constexpr uint8_t kSimpleBlockKeyframe = 0x80;
constexpr uint64_t kMaxTimestampTicks = uint64_t{1} << 62; // block times are signed and a little later

class LayoutReader {
  public:
    explicit LayoutReader(MatroskaLayout& layout) : m_layout(layout) {}
    void Read();

  private:
    void Complain(const EbmlElement& element, const std::string& what);
    [[nodiscard]] bool IsAtCut(const EbmlElement& element) const;
    void ComplainUnlessCut(const EbmlElement& element, const std::string& what);
    uint64_t Unsigned(const EbmlElement& parent, uint32_t id, uint64_t absent = 0);
    std::optional<uint64_t> OptionalUnsigned(const EbmlElement& parent, uint32_t id);
    std::optional<std::string> OptionalText(const EbmlElement& parent, uint32_t id);
    void ReadInfo(const EbmlElement& info);
    void ReadSeekHead(const EbmlElement& seekHead);
    void ReadTrack(const EbmlElement& entry);
    void ReadCluster(const EbmlElement& element);
    void ReadBlockElement(const EbmlElement& element, LayoutCluster& cluster);
    void ReadGroup(const EbmlElement& group, LayoutCluster& cluster);
    void ReadCuePoint(const EbmlElement& point);

    MatroskaLayout& m_layout;
};

void LayoutReader::Complain(const EbmlElement& element, const std::string& what) {
    m_layout.problems.push_back("@" + std::to_string(element.offset) + ": " + what);
}

bool LayoutReader::IsAtCut(const EbmlElement& element) const {
    return element.End() == m_layout.file.size() && !m_layout.tree.cuts.empty();
}

// What stands at the end of a file that was cut has lost bytes without being wrong.
void LayoutReader::ComplainUnlessCut(const EbmlElement& element, const std::string& what) {
    (IsAtCut(element) ? m_layout.cuts : m_layout.problems)
        .push_back("@" + std::to_string(element.offset) + ": " + what);
}

std::optional<uint64_t> LayoutReader::OptionalUnsigned(const EbmlElement& parent, uint32_t id) {
    const EbmlElement* const element = parent.Child(id);
    return element == nullptr || element->cut ? std::nullopt : UnsignedOf(m_layout.file, *element);
}

uint64_t LayoutReader::Unsigned(const EbmlElement& parent, uint32_t id, uint64_t absent) {
    return OptionalUnsigned(parent, id).value_or(absent);
}

std::optional<std::string> LayoutReader::OptionalText(const EbmlElement& parent, uint32_t id) {
    const EbmlElement* const element = parent.Child(id);
    return element == nullptr ? std::nullopt : std::optional(TextOf(m_layout.file, *element));
}

void LayoutReader::ReadInfo(const EbmlElement& info) {
    m_layout.timestampScaleNs = Unsigned(info, kTimestampScale, kDefaultTimestampScaleNs);
    if (const EbmlElement* const duration = info.Child(kDuration)) {
        m_layout.duration = FloatOf(m_layout.file, *duration);
    }
    m_layout.muxingApp = OptionalText(info, kMuxingApp).value_or("");
    m_layout.writingApp = OptionalText(info, kWritingApp).value_or("");
}

void LayoutReader::ReadSeekHead(const EbmlElement& seekHead) {
    for (const EbmlElement* const seek : seekHead.Children(kSeek)) {
        const EbmlElement* const target = seek->Child(kSeekId);
        const std::optional<uint64_t> position = OptionalUnsigned(*seek, kSeekPosition);
        const std::optional<EbmlNumber> id =
            target == nullptr ? std::nullopt : ReadEbmlId(DataOf(m_layout.file, *target));
        if (!id || !position) {
            Complain(*seek, "a seek head entry without a valid SeekID and SeekPosition");
            continue;
        }
        m_layout.seekEntries.push_back({static_cast<uint32_t>(id->value), *position});
    }
}

void LayoutReader::ReadTrack(const EbmlElement& entry) {
    LayoutTrack track;
    track.number = Unsigned(entry, kTrackNumber);
    track.uid = Unsigned(entry, kTrackUid);
    track.type = Unsigned(entry, kTrackType);
    track.codecId = OptionalText(entry, kCodecId).value_or("");
    track.language = OptionalText(entry, kLanguage);
    track.name = OptionalText(entry, kName);
    track.flagDefault = OptionalUnsigned(entry, kFlagDefault);
    track.flagForced = OptionalUnsigned(entry, kFlagForced);
    track.flagLacing = OptionalUnsigned(entry, kFlagLacing);
    track.defaultDurationNs = OptionalUnsigned(entry, kDefaultDuration);
    track.codecDelayNs = OptionalUnsigned(entry, kCodecDelay);
    if (const EbmlElement* const codecPrivate = entry.Child(kCodecPrivate)) {
        track.codecPrivateSize = codecPrivate->dataSize;
    }
    m_layout.tracks.push_back(std::move(track));
}

void LayoutReader::ReadBlockElement(const EbmlElement& element, LayoutCluster& cluster) {
    std::string lacingProblem;
    std::optional<LayoutBlock> block = ReadBlock(DataOf(m_layout.file, element), lacingProblem);
    if (!block) {
        ComplainUnlessCut(element, element.Name() + " is too short to be one");
        return;
    }
    if (!lacingProblem.empty()) {
        ComplainUnlessCut(element, lacingProblem);
    }
    block->offset = element.offset;
    block->simple = element.id == kSimpleBlock;
    block->keyframe = block->simple && (block->flags & kSimpleBlockKeyframe) != 0;
    block->time = static_cast<int64_t>(cluster.timestamp.value_or(0)) + block->relativeTime;
    cluster.blocks.push_back(std::move(*block));
}

void LayoutReader::ReadGroup(const EbmlElement& group, LayoutCluster& cluster) {
    const EbmlElement* const element = group.Child(kBlock);
    const size_t before = cluster.blocks.size();
    if (element != nullptr) {
        ReadBlockElement(*element, cluster);
    } else {
        ComplainUnlessCut(group, "a BlockGroup without a Block");
    }
    if (cluster.blocks.size() > before) {
        cluster.blocks.back().keyframe = group.Child(kReferenceBlock) == nullptr;
        cluster.blocks.back().duration = OptionalUnsigned(group, kBlockDuration);
    }
}

void LayoutReader::ReadCluster(const EbmlElement& element) {
    LayoutCluster cluster;
    cluster.offset = element.offset;
    cluster.dataOffset = element.DataOffset();
    cluster.timestamp = OptionalUnsigned(element, kTimestamp);
    if (cluster.timestamp.value_or(0) > kMaxTimestampTicks) {
        Complain(element, "a Cluster at an impossible time");
        cluster.timestamp.reset();
    }
    for (const EbmlElement& child : element.children) {
        if (child.id == kSimpleBlock) {
            ReadBlockElement(child, cluster);
        } else if (child.id == kBlockGroup) {
            ReadGroup(child, cluster);
        }
    }
    if (!cluster.timestamp && cluster.blocks.empty() && IsAtCut(element)) {
        return; // only its beginning is there
    }
    m_layout.clusters.push_back(std::move(cluster));
}

void LayoutReader::ReadCuePoint(const EbmlElement& point) {
    const std::optional<uint64_t> time = OptionalUnsigned(point, kCueTime);
    const std::vector<const EbmlElement*> positions = point.Children(kCueTrackPositions);
    if (!time || positions.empty()) {
        Complain(point, "a CuePoint without a time or without a position");
        return;
    }
    for (const EbmlElement* const position : positions) {
        LayoutCue cue;
        cue.time = *time;
        cue.track = Unsigned(*position, kCueTrack);
        cue.clusterPosition = Unsigned(*position, kCueClusterPosition);
        cue.relativePosition = OptionalUnsigned(*position, kCueRelativePosition);
        cue.duration = OptionalUnsigned(*position, kCueDuration);
        cue.blockNumber = OptionalUnsigned(*position, kCueBlockNumber);
        m_layout.cues.push_back(cue);
    }
}

void LayoutReader::Read() {
    if (const EbmlElement* const head = m_layout.tree.Child(kHead)) {
        m_layout.docType = OptionalText(*head, kDocType).value_or("");
    }
    const EbmlElement* const segment = m_layout.Segment();
    if (segment == nullptr) {
        m_layout.problems.push_back("@0: there is no Segment");
        return;
    }
    for (const EbmlElement& child : segment->children) {
        switch (child.id) {
        case kInfo:
            ReadInfo(child);
            break;
        case kSeekHead:
            ReadSeekHead(child);
            break;
        case kTracks:
            for (const EbmlElement* const entry : child.Children(kTrackEntry)) {
                ReadTrack(*entry);
            }
            break;
        case kCluster:
            ReadCluster(child);
            break;
        case kCues:
            for (const EbmlElement* const point : child.Children(kCuePoint)) {
                ReadCuePoint(*point);
            }
            break;
        default:
            break;
        }
    }
}

} // namespace

const LayoutTrack* MatroskaLayout::Track(uint64_t number) const {
    const auto found = std::find_if(tracks.begin(), tracks.end(),
                                    [number](const LayoutTrack& track) { return track.number == number; });
    return found == tracks.end() ? nullptr : &*found;
}

std::vector<LayoutBlock> MatroskaLayout::BlocksOf(uint64_t track) const {
    std::vector<LayoutBlock> found;
    for (const LayoutCluster& cluster : clusters) {
        std::copy_if(cluster.blocks.begin(), cluster.blocks.end(), std::back_inserter(found),
                     [track](const LayoutBlock& block) { return block.track == track; });
    }
    return found;
}

MatroskaLayout ReadLayout(ByteView file) {
    MatroskaLayout layout;
    layout.file = file;
    layout.tree = ReadEbml(file);
    layout.problems = layout.tree.problems;
    layout.cuts = layout.tree.cuts;
    layout.timestampScaleNs = kDefaultTimestampScaleNs;
    LayoutReader(layout).Read();
    return layout;
}

} // namespace test_support
