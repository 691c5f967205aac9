// Clusters and their blocks.
#include "tests/support/layout_findings.h"

namespace test_support {

namespace {

void CheckBlock(const MatroskaLayout& layout, const LayoutBlock& block, Findings& findings) {
    if (layout.Track(block.track) == nullptr) {
        findings.Add(block.offset, "a block of the unknown track " + std::to_string(block.track));
    }
    if (block.time < 0) {
        findings.Add(block.offset, "a block before the start, at " + std::to_string(block.time));
    }
}

// The cluster's time comes first: a reader that streams needs it before the blocks. Checksums and padding may precede.
void CheckTimestampPlace(const EbmlElement& cluster, Findings& findings) {
    for (const EbmlElement& child : cluster.children) {
        if (child.id == ebml_id::kTimestamp) {
            return;
        }
        if (child.id == ebml_id::kSimpleBlock || child.id == ebml_id::kBlockGroup) {
            findings.Add(child.offset, "a block stands before its Cluster's Timestamp");
            return;
        }
    }
}

} // namespace

void CheckClusters(const MatroskaLayout& layout, const EbmlElement& segment, bool mayGoBack, Findings& findings) {
    for (const EbmlElement* const cluster : segment.Children(ebml_id::kCluster)) {
        CheckTimestampPlace(*cluster, findings);
    }
    uint64_t previous = 0;
    for (const LayoutCluster& cluster : layout.clusters) {
        if (!cluster.timestamp) {
            findings.Add(cluster.offset, "a Cluster without a Timestamp");
        } else {
            if (*cluster.timestamp < previous && !mayGoBack) {
                findings.Add(cluster.offset, "the Cluster's time " + std::to_string(*cluster.timestamp) +
                                                 " is before the one of the Cluster before it");
            }
            previous = *cluster.timestamp;
        }
        for (const LayoutBlock& block : cluster.blocks) {
            CheckBlock(layout, block, findings);
        }
    }
}

} // namespace test_support
