#include "report/file_survey.h"

#include <algorithm>

#include <ebml/EbmlHead.h>
#include <ebml/EbmlSubHead.h>
#include <ebml/EbmlVoid.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxContexts.h>
#include <matroska/KaxCues.h>
#include <matroska/KaxCuesData.h>
#include <matroska/KaxInfo.h>
#include <matroska/KaxInfoData.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxTracks.h>

#include "sources/matroska/block_walker.h"
#include "sources/matroska/resync.h"
#include "sources/matroska/track_entry_reader.h"

namespace report {

namespace {

using namespace libmatroska;
using matroska::Element;
using matroska::IdOf;
using matroska::MayContain;

constexpr size_t kMostDamages = 100;
constexpr size_t kMostPieces = 400;
constexpr UINT64 kMostCheckedCuePoints = 100'000;

} // namespace

FileFacts FileSurvey::Read() {
    const UINT64 size = m_reader.Source().Size();
    m_facts.bytes = size;
    (void)m_facts.timeline.AddRow();
    UINT64 position = ReadHead();
    while (const auto element = m_reader.ElementAt(position, size)) {
        if (element->id == IdOf<KaxSegment>()) {
            ReadSegment(*element);
            position = element->end;
            break;
        }
        m_tree.Add(m_facts.tree, *element, TopKindOf(element->id));
        position = element->end;
    }
    if (position < size) {
        AddPiece("behind the Segment", position, size);
    }
    m_progress(size, size);
    return std::move(m_facts);
}

UINT64 FileSurvey::ReadHead() {
    const auto head = m_reader.ElementAt(0, m_reader.Source().Size());
    if (!head || head->id != IdOf<libebml::EbmlHead>() || head->unknownSize) {
        throw NoMatroskaFile("it is no Matroska file");
    }
    m_facts.docType = "matroska"; // what the format says of a head that does not say
    (void)m_reader.ForEachChild(*head, [&](const Element& child) {
        if (child.id == IdOf<libebml::EDocType>()) {
            m_facts.docType = m_reader.ReadString(child);
        }
    });
    m_tree.Add(m_facts.tree, *head, TopKindOf(head->id));
    AddPiece("EBMLHead", head->start, head->end);
    return head->end;
}

void FileSurvey::ReadSegment(const Element& segment) {
    Node node;
    node.name = "Segment";
    node.start = segment.start;
    node.size = segment.end - segment.start;
    node.isWhole = segment.whole;
    node.value = segment.unknownSize ? "of unknown size" : "";
    m_facts.tree.push_back(std::move(node));
    UINT64 position = segment.data;
    while (position < segment.end) {
        m_progress(position, m_facts.bytes);
        position = ReadElement(position, segment);
    }
    if (!segment.whole) {
        AddDamage(segment.end, segment.end, "the file ends before its Segment does: it was cut off");
    }
}

UINT64 FileSurvey::ReadElement(UINT64 position, const Element& segment) {
    const auto element = m_reader.ElementAt(position, segment.end);
    if (element && element->id == IdOf<KaxCluster>()) {
        return ReadCluster(*element, segment);
    }
    if (!element || element->unknownSize || !element->whole || !MayContain<KaxSegment>(element->id)) {
        const UINT64 next = matroska::FindCluster(m_reader, position + 1, segment.end);
        AddDamage(position, next,
                  element && !element->whole ? "an element that does not fit into the file" : "no element begins here");
        AddPiece("damaged", position, next);
        return next;
    }
    if (element->id == IdOf<KaxInfo>()) {
        ReadInfo(*element);
    } else if (element->id == IdOf<KaxTracks>()) {
        ReadTracks(*element);
    } else if (element->id == IdOf<KaxCues>()) {
        ReadCues(*element, segment);
    }
    const auto kind = KindOf(EBML_CLASS_CONTEXT(KaxSegment), element->id);
    m_tree.Add(m_facts.tree.back().children, *element, kind, 1);
    AddPiece(kind ? kind->name : "unknown", element->start, element->end);
    return element->end;
}

UINT64 FileSurvey::ReadCluster(Element cluster, const Element& segment) {
    const bool isTorn = !cluster.whole;
    if (isTorn || cluster.unknownSize) {
        cluster.end = EndOfCluster(cluster);
    }
    const UINT64 ticks = ReadBlocks(cluster);
    if (ticks <= kMaxTicks) {
        ++m_facts.timeline.At(0, ticks).blocks;
    }
    ++m_facts.clusters;
    m_facts.largestCluster = std::max(m_facts.largestCluster, cluster.end - cluster.start);
    m_tree.Add(m_facts.tree.back().children, cluster, KindOf(EBML_CLASS_CONTEXT(KaxSegment), cluster.id), 1);
    AddPiece("Cluster", cluster.start, cluster.end);
    if (isTorn) {
        const UINT64 next = matroska::FindCluster(m_reader, cluster.end, segment.end);
        AddDamage(cluster.end, next, "a Cluster of which the rest is missing");
        AddPiece("damaged", cluster.end, next);
        return std::max(next, cluster.end + 1);
    }
    return cluster.end;
}

// Of one whose size is not known or cannot be: where something comes that is no whole part of a cluster.
UINT64 FileSurvey::EndOfCluster(const Element& cluster) const {
    UINT64 position = cluster.data;
    while (const auto child = m_reader.ElementAt(position, cluster.end)) {
        if (!MayContain<KaxCluster>(child->id) || !child->whole || child->unknownSize) {
            break;
        }
        position = child->end;
    }
    return position;
}

UINT64 FileSurvey::ReadBlocks(const Element& cluster) {
    Element around = cluster; // what the walker takes for the Segment
    around.data = cluster.start;
    around.whole = true;
    matroska::BlockWalker walker(m_reader, around);
    UINT64 end = cluster.data;
    while (const auto block = walker.Next()) {
        m_meters.Add(*block);
        end = block->data + block->size;
    }
    if (walker.IsDamaged() && cluster.whole && !cluster.unknownSize) {
        AddDamage(end, cluster.end, "a Cluster with something else inside");
    }
    return walker.ClusterTicks();
}

void FileSurvey::ReadInfo(const Element& info) {
    (void)m_reader.ForEachChild(info, [this](const Element& child) {
        if (child.id == IdOf<KaxTimecodeScale>()) {
            m_facts.scaleNs = std::max<UINT64>(m_reader.ReadUnsigned(child, m_facts.scaleNs), 1);
        } else if (child.id == IdOf<KaxDuration>()) {
            m_facts.durationTicks = m_reader.ReadFloat(child);
        } else if (child.id == IdOf<KaxTitle>()) {
            m_facts.title = m_reader.ReadString(child);
        } else if (child.id == IdOf<KaxMuxingApp>()) {
            m_facts.muxingApp = m_reader.ReadString(child);
        } else if (child.id == IdOf<KaxWritingApp>()) {
            m_facts.writingApp = m_reader.ReadString(child);
        }
    });
}

void FileSurvey::ReadTracks(const Element& tracks) {
    (void)m_reader.ForEachChild(tracks, [this](const Element& child) {
        if (child.id == IdOf<KaxTrackEntry>()) {
            const matroska::Track track = matroska::ReadTrackEntry(m_reader, child, m_privateRoom);
            m_privateRoom -= std::min<UINT64>(m_privateRoom, track.codecPrivate.size());
            m_meters.Declare(track);
        }
    });
}

void FileSurvey::ReadCues(const Element& cues, const Element& segment) {
    (void)m_reader.ForEachChild(cues, [&](const Element& child) {
        if (child.id == IdOf<KaxCuePoint>()) {
            ReadCuePoint(child, segment);
        }
    });
}

void FileSurvey::ReadCuePoint(const Element& point, const Element& segment) {
    bool leadsAstray = false;
    (void)m_reader.ForEachChild(point, [&](const Element& child) {
        if (child.id == IdOf<KaxCueTime>()) {
            if (const UINT64 ticks = m_reader.ReadUnsigned(child); ticks <= kMaxTicks) {
                ++m_facts.timeline.At(0, ticks).keys;
            }
        } else if (child.id == IdOf<KaxCueTrackPositions>() && m_facts.cuePoints < kMostCheckedCuePoints) {
            (void)m_reader.ForEachChild(child, [&](const Element& part) {
                if (part.id == IdOf<KaxCueClusterPosition>()) {
                    const UINT64 offset = std::min(m_reader.ReadUnsigned(part), m_facts.bytes);
                    const auto target = m_reader.ElementAt(segment.data + offset, segment.end);
                    leadsAstray = leadsAstray || !target || target->id != IdOf<KaxCluster>();
                }
            });
        }
    });
    ++m_facts.cuePoints;
    m_facts.lostCuePoints += leadsAstray ? 1 : 0;
}

// Pieces of one kind that follow each other are one, and when there are too many the last takes up the rest.
void FileSurvey::AddPiece(const std::string& name, UINT64 start, UINT64 end) {
    auto& pieces = m_facts.pieces;
    if (!pieces.empty() && (pieces.back().name == name || pieces.size() >= kMostPieces)) {
        pieces.back().end = end;
        ++pieces.back().count;
        return;
    }
    if (start < end) {
        pieces.push_back({name, start, end});
    }
}

void FileSurvey::AddDamage(UINT64 from, UINT64 to, const std::string& what) {
    ++m_facts.damageCount;
    if (m_facts.damages.size() < kMostDamages) {
        m_facts.damages.push_back({from, to, what});
    }
}

} // namespace report
