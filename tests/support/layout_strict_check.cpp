// What the strict profile promises of a file's layout, beyond what every file of ours keeps to.
#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "tests/support/layout_findings.h"

namespace test_support {

namespace {

using namespace ebml_id;

constexpr uint64_t kVideoTrack = 1;
constexpr uint64_t kAudioTrack = 2;
constexpr uint64_t kSubtitleTrack = 17;
constexpr uint64_t kMaxClusterBytes = 5 << 20;
constexpr uint64_t kMaxClusterNs = 5'000'000'000;
constexpr uint64_t kSoundCueNs = 2'000'000'000;

const LayoutTrack* FirstOfType(const MatroskaLayout& layout, uint64_t type) {
    const auto found = std::find_if(layout.tracks.begin(), layout.tracks.end(),
                                    [type](const LayoutTrack& track) { return track.type == type; });
    return found == layout.tracks.end() ? nullptr : &*found;
}

// A reader of a stream knows what the blocks are before they come; one that seeks finds all at once.
void CheckHeadOrder(const EbmlElement& segment, bool cut, Findings& findings) {
    const auto first = std::find_if(segment.children.begin(), segment.children.end(),
                                    [](const EbmlElement& child) { return child.id == kCluster; });
    std::set<uint32_t> before;
    std::for_each(segment.children.begin(), first, [&before](const EbmlElement& child) { before.insert(child.id); });
    for (const uint32_t id : {kInfo, kTracks}) {
        if (first != segment.children.end() && !before.contains(id)) {
            findings.Add(first->offset, "there is no " + ElementName(id) + " before the first Cluster");
        }
    }
    if (cut && segment.Child(kInfo) == nullptr) { // a whole file is asked for it anyhow
        findings.Add(segment.offset, "there is no Info");
    }
    if (!cut && !segment.children.empty() && segment.children.front().id != kSeekHead) {
        findings.Add(segment.children.front().offset, "the Segment does not begin with its seek head");
    }
}

void CheckClusterTime(const MatroskaLayout& layout, const LayoutCluster& cluster, Findings& findings) {
    const auto [earliest, latest] =
        std::minmax_element(cluster.blocks.begin(), cluster.blocks.end(),
                            [](const LayoutBlock& a, const LayoutBlock& b) { return a.time < b.time; });
    if (earliest->relativeTime != 0) {
        findings.Add(cluster.offset, "the Cluster's time is not the one of its earliest block, which is " +
                                         std::to_string(earliest->relativeTime) + " away");
    }
    if (static_cast<uint64_t>(latest->time - earliest->time) * layout.timestampScaleNs > kMaxClusterNs) {
        findings.Add(cluster.offset, "a Cluster of more than 5 s");
    }
}

void CheckStrictClusters(const MatroskaLayout& layout, const EbmlElement& segment, Findings& findings) {
    for (const LayoutCluster& cluster : layout.clusters) {
        if (cluster.blocks.empty()) {
            findings.Add(cluster.offset, "a Cluster without a block");
            continue;
        }
        CheckClusterTime(layout, cluster, findings);
        const auto element =
            std::find_if(segment.children.begin(), segment.children.end(),
                         [&cluster](const EbmlElement& child) { return child.offset == cluster.offset; });
        if (element != segment.children.end() && element->dataSize > kMaxClusterBytes && cluster.blocks.size() > 1) {
            findings.Add(cluster.offset, "a Cluster of more than 5 MiB");
        }
    }
}

const LayoutBlock* CuedBlock(const MatroskaLayout& layout, const EbmlElement& segment, const LayoutCue& cue) {
    for (const LayoutCluster& cluster : layout.clusters) {
        if (cluster.offset != segment.DataOffset() + cue.clusterPosition) {
            continue;
        }
        const LayoutBlock* cued = nullptr;
        for (const LayoutBlock& block : cluster.blocks) {
            // Of several at that time, the one of the cue's duration.
            if (block.track == cue.track && block.time == static_cast<int64_t>(cue.time) &&
                (cued == nullptr || block.duration == cue.duration)) {
                cued = &block;
            }
        }
        return cued;
    }
    return nullptr;
}

void CheckEachCue(const MatroskaLayout& layout, const EbmlElement& segment, Findings& findings) {
    for (const LayoutCue& cue : layout.cues) {
        const std::string name = "the cue for track " + std::to_string(cue.track) + " at " + std::to_string(cue.time);
        const LayoutBlock* const block = CuedBlock(layout, segment, cue);
        const LayoutTrack* const track = layout.Track(cue.track);
        if (block == nullptr || track == nullptr) {
            continue; // told already
        }
        if (!block->keyframe) {
            findings.Add(block->offset, name + " leads to a block that is no keyframe");
        }
        if (!cue.relativePosition) {
            findings.Add(block->offset, name + " has no CueRelativePosition");
        }
        if (cue.duration != (track->type == kSubtitleTrack ? block->duration : std::nullopt)) {
            findings.Add(block->offset, name + " has another duration than its block");
        }
    }
}

// Keyframes of the first video track and all subtitles have a cue; without video, the sound has one every 2 s.
void CheckThatCuesAreThere(const MatroskaLayout& layout, const EbmlElement& segment, Findings& findings) {
    const LayoutTrack* const video = FirstOfType(layout, kVideoTrack);
    const LayoutTrack* const sound = video == nullptr ? FirstOfType(layout, kAudioTrack) : nullptr;
    std::set<std::pair<uint64_t, int64_t>> cued;
    for (const LayoutCue& cue : layout.cues) {
        cued.emplace(cue.track, static_cast<int64_t>(cue.time));
        const LayoutTrack* const track = layout.Track(cue.track);
        if (track != nullptr && track != video && track != sound && track->type != kSubtitleTrack) {
            findings.Add(segment.offset, "a cue for track " + std::to_string(cue.track) + ", which needs none");
        }
    }
    std::optional<int64_t> lastSound;
    for (const LayoutCluster& cluster : layout.clusters) {
        for (const LayoutBlock& block : cluster.blocks) {
            const LayoutTrack* const track = layout.Track(block.track);
            bool needed = track != nullptr && ((track == video && block.keyframe) || track->type == kSubtitleTrack);
            if (track != nullptr && track == sound) {
                needed = !lastSound ||
                         static_cast<uint64_t>(block.time - *lastSound) * layout.timestampScaleNs >= kSoundCueNs;
                lastSound = needed ? block.time : lastSound;
            }
            if (needed && !cued.contains({block.track, block.time})) {
                findings.Add(block.offset, "the block at " + std::to_string(block.time) + " of track " +
                                               std::to_string(block.track) + " has no cue");
            }
        }
    }
}

} // namespace

void CheckStrictLayout(const MatroskaLayout& layout, const EbmlElement& segment, bool cut, Findings& findings) {
    CheckHeadOrder(segment, cut, findings);
    CheckStrictClusters(layout, segment, findings);
    CheckEachCue(layout, segment, findings);
    if (!cut) {
        CheckThatCuesAreThere(layout, segment, findings);
    }
}

} // namespace test_support
