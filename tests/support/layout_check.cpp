#include "tests/support/layout_check.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "tests/support/checksum.h"
#include "tests/support/layout_findings.h"

namespace test_support {

namespace {

using namespace ebml_id;

constexpr uint64_t kMaxReadVersion = 1; // EBML's own
constexpr uint64_t kMaxIdBytes = 4;
constexpr uint64_t kMaxSizeBytes = 8;

uint64_t HeadValue(const MatroskaLayout& layout, const EbmlElement& head, uint32_t id, uint64_t absent) {
    const EbmlElement* const element = head.Child(id);
    return element == nullptr ? absent : UnsignedOf(layout.file, *element).value_or(absent);
}

void CheckHead(const MatroskaLayout& layout, Findings& findings) {
    if (layout.tree.elements.empty() || layout.tree.elements.front().id != kHead) {
        findings.Add(0, "the file does not begin with an EBML head");
        return;
    }
    const EbmlElement& head = layout.tree.elements.front();
    if (layout.docType != "matroska" && layout.docType != "webm") {
        findings.Add(head.offset, "DocType is '" + layout.docType + "'");
    }
    if (HeadValue(layout, head, kReadVersion, 1) > kMaxReadVersion ||
        HeadValue(layout, head, kMaxIdLength, kMaxIdBytes) > kMaxIdBytes ||
        HeadValue(layout, head, kMaxSizeLength, kMaxSizeBytes) > kMaxSizeBytes) {
        findings.Add(head.offset, "the EBML head asks for more than readers can");
    }
    if (HeadValue(layout, head, kDocTypeReadVersion, 1) > HeadValue(layout, head, kDocTypeVersion, 1)) {
        findings.Add(head.offset, "DocTypeReadVersion is above DocTypeVersion");
    }
}

void CheckSegment(const MatroskaLayout& layout, const EbmlElement& segment, bool cut, Findings& findings) {
    if (std::count_if(layout.tree.elements.begin(), layout.tree.elements.end(),
                      [](const EbmlElement& element) { return element.id == kSegment; }) != 1) {
        findings.Add(segment.offset, "there is more than one Segment");
    }
    if (segment.End() != layout.file.size()) {
        findings.Add(segment.End(),
                     "the Segment ends before the file, which has " + std::to_string(layout.file.size()) + " bytes");
    }
    if (cut != segment.unknownSize) {
        findings.Add(segment.offset, cut ? "the Segment of a recording that was cut off has a size"
                                         : "the Segment has an unknown size");
    }
}

void CheckTopLevelCounts(const MatroskaLayout& layout, const EbmlElement& segment, bool cut, Findings& findings) {
    const bool hasBlocks = std::any_of(layout.clusters.begin(), layout.clusters.end(),
                                       [](const LayoutCluster& cluster) { return !cluster.blocks.empty(); });
    for (const uint32_t id : {kSeekHead, kInfo, kTracks, kCues, kAttachments, kChapters}) {
        const size_t count = segment.Children(id).size();
        if (count > 1) {
            findings.Add(segment.offset, "there are " + std::to_string(count) + " " + ElementName(id) + " elements");
        }
        // A file of attachments alone needs no tracks.
        const bool needed = id == kTracks ? hasBlocks : !cut && (id == kInfo || id == kSeekHead);
        if (count == 0 && needed) {
            findings.Add(segment.offset, "there is no " + ElementName(id));
        }
    }
}

void CheckChecksums(const MatroskaLayout& layout, const EbmlElement& element, Findings& findings) {
    for (const EbmlElement& child : element.children) {
        CheckChecksums(layout, child, findings);
    }
    if (element.cut || element.children.empty() || element.children.front().id != kCrc32) {
        return;
    }
    const EbmlElement& crc = element.children.front();
    const ByteView stored = DataOf(layout.file, crc);
    const ByteView covered =
        DataOf(layout.file, element).subspan(static_cast<size_t>(crc.End() - element.DataOffset()));
    const uint32_t actual = Crc32(covered);
    bool same = stored.size() == sizeof(actual);
    for (size_t i = 0; same && i < stored.size(); ++i) {
        same = stored[i] == static_cast<uint8_t>(actual >> (8 * i)); // stored least significant byte first
    }
    if (!same) {
        findings.Add(crc.offset, "the CRC-32 of " + element.Name() + " does not fit its content");
    }
}

void CheckTrackEntry(const EbmlElement& entry, Findings& findings) {
    for (const uint32_t id : {kTrackNumber, kTrackUid, kTrackType, kCodecId}) {
        if (entry.Child(id) == nullptr) {
            findings.Add(entry.offset, "a TrackEntry without " + ElementName(id));
        }
    }
    const EbmlElement* const video = entry.Child(kVideo);
    if (video != nullptr && (video->Child(kPixelWidth) == nullptr || video->Child(kPixelHeight) == nullptr)) {
        findings.Add(video->offset, "a Video element without a picture size");
    }
}

void CheckTracks(const MatroskaLayout& layout, const EbmlElement& segment, Findings& findings) {
    const EbmlElement* const tracks = segment.Child(kTracks);
    if (tracks == nullptr) {
        return;
    }
    for (const EbmlElement* const entry : tracks->Children(kTrackEntry)) {
        CheckTrackEntry(*entry, findings);
    }
    std::set<uint64_t> numbers;
    for (const LayoutTrack& track : layout.tracks) {
        if (track.number == 0 || !numbers.insert(track.number).second) {
            findings.Add(tracks->offset, "track number " + std::to_string(track.number) + " is zero or repeated");
        }
    }
}

void CheckDuration(const MatroskaLayout& layout, const EbmlElement& segment, Findings& findings) {
    if (layout.timestampScaleNs == 0) {
        findings.Add(segment.offset, "the timestamp scale is zero");
    }
    double last = 0;
    for (const LayoutCluster& cluster : layout.clusters) {
        for (const LayoutBlock& block : cluster.blocks) {
            last = std::max(last, static_cast<double>(block.time) + static_cast<double>(block.duration.value_or(0)));
        }
    }
    // A block's time is rounded to a tick, the duration is not.
    constexpr double kRoundingTicks = 1;
    if (layout.duration && *layout.duration + kRoundingTicks < last) {
        findings.Add(segment.offset, "Duration ends before the last block does");
    }
}

} // namespace

std::vector<std::string> CheckLayout(const MatroskaLayout& layout, const LayoutExpectations& expected) {
    Findings findings(layout.problems);
    if (!expected.cut) {
        findings.Append(layout.cuts);
    }
    CheckHead(layout, findings);
    const EbmlElement* const segment = layout.Segment();
    if (segment == nullptr) {
        return findings.Take();
    }
    CheckSegment(layout, *segment, expected.cut, findings);
    CheckTopLevelCounts(layout, *segment, expected.cut, findings);
    CheckChecksums(layout, *segment, findings);
    CheckTracks(layout, *segment, findings);
    if (!expected.cut) {
        CheckDuration(layout, *segment, findings);
        CheckSeekHead(layout, *segment, findings);
    }
    CheckClusters(layout, *segment, expected.clustersMayGoBack, findings);
    CheckCues(layout, *segment, expected.strict, findings);
    if (expected.strict) {
        CheckStrictLayout(layout, *segment, expected.cut, findings);
    }
    return findings.Take();
}

std::vector<std::string> CheckLayout(ByteView file, const LayoutExpectations& expected) {
    return CheckLayout(ReadLayout(file), expected);
}

} // namespace test_support
