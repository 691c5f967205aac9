// The seek head and the cues: do they point at what they claim?
#include <algorithm>
#include <map>
#include <set>

#include "tests/support/layout_findings.h"

namespace test_support {

namespace {

using namespace ebml_id;

const EbmlElement* ChildAt(const EbmlElement& parent, uint64_t position) {
    const uint64_t room = parent.dataSize;
    if (position >= room) {
        return nullptr;
    }
    const uint64_t offset = parent.DataOffset() + position;
    const auto found =
        std::lower_bound(parent.children.begin(), parent.children.end(), offset,
                         [](const EbmlElement& child, uint64_t wanted) { return child.offset < wanted; });
    return found != parent.children.end() && found->offset == offset ? &*found : nullptr;
}

std::string Describe(const LayoutCue& cue) {
    return "the cue for track " + std::to_string(cue.track) + " at " + std::to_string(cue.time);
}

// A cue's time is rounded down. So is a block's, unless it lies before its cluster's time: its offset is then cut off
// towards zero, which is zero itself for less than a tick, and a fraction of a tick makes it one tick later.
bool IsFor(const LayoutBlock& block, const LayoutCue& cue, bool exact) {
    const int64_t later = block.time - static_cast<int64_t>(cue.time);
    return block.track == cue.track && (later == 0 || (!exact && later == 1 && block.relativeTime <= 0));
}

class CueChecker {
  public:
    CueChecker(const MatroskaLayout& layout, const EbmlElement& segment, bool exact, Findings& findings)
        : m_layout(layout), m_segment(segment), m_exact(exact), m_findings(findings) {
        for (const LayoutCluster& cluster : layout.clusters) {
            m_clusters[cluster.offset] = &cluster;
        }
    }
    void Check(const LayoutCue& cue);

  private:
    void CheckRelativePosition(const LayoutCue& cue, const EbmlElement& element, const LayoutCluster& cluster);
    void CheckBlockNumber(const LayoutCue& cue, const LayoutCluster& cluster);

    const MatroskaLayout& m_layout;
    const EbmlElement& m_segment;
    const bool m_exact;
    Findings& m_findings;
    std::map<uint64_t, const LayoutCluster*> m_clusters; // by offset
};

void CueChecker::CheckRelativePosition(const LayoutCue& cue, const EbmlElement& element, const LayoutCluster& cluster) {
    const EbmlElement* const target = ChildAt(element, *cue.relativePosition);
    const auto begins = [target](const LayoutBlock& block) {
        return block.offset >= target->offset && block.offset < target->End();
    };
    const auto found =
        target == nullptr ? cluster.blocks.end() : std::find_if(cluster.blocks.begin(), cluster.blocks.end(), begins);
    if (found == cluster.blocks.end() || !IsFor(*found, cue, m_exact)) {
        m_findings.Add(element.DataOffset() + *cue.relativePosition,
                       Describe(cue) + " points here, where no such block begins");
    }
}

void CueChecker::CheckBlockNumber(const LayoutCue& cue, const LayoutCluster& cluster) {
    const uint64_t number = *cue.blockNumber; // counted from 1
    if (number == 0 || number > cluster.blocks.size() ||
        !IsFor(cluster.blocks[static_cast<size_t>(number - 1)], cue, m_exact)) {
        m_findings.Add(cluster.offset, Describe(cue) + " names block " + std::to_string(number) + ", which is another");
    }
}

void CueChecker::Check(const LayoutCue& cue) {
    if (m_layout.Track(cue.track) == nullptr) {
        m_findings.Add(m_segment.offset, Describe(cue) + " is for an unknown track");
    }
    const EbmlElement* const element = ChildAt(m_segment, cue.clusterPosition);
    if (element == nullptr || !m_clusters.contains(element->offset)) {
        m_findings.Add(m_segment.DataOffset(), Describe(cue) + " points at position " +
                                                   std::to_string(cue.clusterPosition) + ", where no Cluster begins");
        return;
    }
    const LayoutCluster& cluster = *m_clusters.at(element->offset);
    if (std::none_of(cluster.blocks.begin(), cluster.blocks.end(),
                     [this, &cue](const LayoutBlock& block) { return IsFor(block, cue, m_exact); })) {
        m_findings.Add(cluster.offset, Describe(cue) + " points at this Cluster, which has no such block");
        return;
    }
    if (cue.relativePosition) {
        CheckRelativePosition(cue, *element, cluster);
    }
    if (cue.blockNumber) {
        CheckBlockNumber(cue, cluster);
    }
}

} // namespace

void CheckSeekHead(const MatroskaLayout& layout, const EbmlElement& segment, Findings& findings) {
    std::set<uint32_t> listed;
    for (const LayoutSeekEntry& entry : layout.seekEntries) {
        listed.insert(entry.targetId);
        const EbmlElement* const target = ChildAt(segment, entry.position);
        if (target == nullptr || target->id != entry.targetId) {
            findings.Add(segment.DataOffset(), "the seek head puts " + ElementName(entry.targetId) + " at position " +
                                                   std::to_string(entry.position) + ", where " +
                                                   (target == nullptr ? "no element begins" : target->Name() + " is"));
        }
    }
    for (const uint32_t id : {kInfo, kTracks, kCues, kAttachments, kChapters, kTags}) {
        const EbmlElement* const element = segment.Child(id);
        if (element != nullptr && !listed.contains(id)) {
            findings.Add(element->offset, ElementName(id) + " is not listed in the seek head");
        }
    }
}

void CheckCues(const MatroskaLayout& layout, const EbmlElement& segment, bool exact, Findings& findings) {
    CueChecker checker(layout, segment, exact, findings);
    for (const LayoutCue& cue : layout.cues) {
        checker.Check(cue);
    }
    const EbmlElement* const cues = segment.Child(kCues);
    if (cues != nullptr && layout.cues.empty()) {
        findings.Add(cues->offset, "the Cues are empty");
    }
}

} // namespace test_support
