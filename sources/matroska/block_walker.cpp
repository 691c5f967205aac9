#include "sources/matroska/block_walker.h"

#include <algorithm>
#include <array>
#include <bit>

#include <matroska/KaxBlock.h>
#include <matroska/KaxBlockData.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxClusterData.h>
#include <matroska/KaxContexts.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxSemantic.h>

#include "codecs/big_endian.h"
#include "sources/matroska/resync.h"

namespace matroska {

namespace {

using namespace libmatroska;

constexpr BYTE kKeyframeFlag = 0x80;
constexpr BYTE kLacingMask = 0x06;
constexpr size_t kMaxTrackNumberBytes = 8;
constexpr size_t kTimeAndFlagsBytes = 3;
constexpr UINT64 kBitsInByte = 8;
// So that a sum with a block's offset stays far from the end of 64 bits.
constexpr UINT64 kMaxClusterTicks = UINT64{1} << 62;

} // namespace

void BlockWalker::Rewind() {
    m_position = m_segment.data;
    m_cluster.reset();
    m_clusterTicks = 0;
    m_damaged = false;
}

std::optional<Block> BlockWalker::Next() {
    while (m_position < m_segment.end) {
        if (!m_cluster) {
            StepAtTopLevel();
        } else if (const std::optional<Block> block = StepInCluster()) {
            return block;
        }
    }
    // A segment or cluster whose size was known and that the file does not hold was cut off.
    m_damaged = m_damaged || !m_segment.whole;
    return {};
}

void BlockWalker::StepAtTopLevel() {
    const std::optional<Element> element = m_reader.ElementAt(m_position, m_segment.end);
    if (element && element->id == IdOf<KaxCluster>()) {
        m_damaged = m_damaged || !element->whole;
        m_cluster = element;
        m_position = element->data;
    } else if (element && MayContain<KaxSegment>(element->id) && !element->unknownSize && element->whole) {
        m_position = element->end;
    } else {
        LookForCluster();
    }
}

void BlockWalker::LookForCluster() {
    m_damaged = true;
    m_cluster.reset();
    m_position = FindCluster(m_reader, m_position, m_segment.end);
}

std::optional<Block> BlockWalker::StepInCluster() {
    if (m_position >= m_cluster->end) {
        m_cluster.reset();
        return {};
    }
    const std::optional<Element> part = m_reader.ElementAt(m_position, m_cluster->end);
    if (part && m_cluster->unknownSize && !MayContain<KaxCluster>(part->id) && MayContain<KaxSegment>(part->id)) {
        m_cluster.reset(); // what comes here ends a cluster of unknown size
        return {};
    }
    // Most are blocks, and found without a look at the whole list.
    const bool belongs = part && (part->id == IdOf<KaxSimpleBlock>() || part->id == IdOf<KaxBlockGroup>() ||
                                  MayContain<KaxCluster>(part->id));
    if (!belongs || part->unknownSize || !part->whole) {
        LookForCluster();
        return {};
    }
    m_position = part->end;
    return ReadPart(*part);
}

std::optional<Block> BlockWalker::ReadPart(const Element& part) {
    if (part.id == IdOf<KaxClusterTimecode>()) {
        m_clusterTicks = m_reader.ReadUnsigned(part);
        if (m_clusterTicks > kMaxClusterTicks) {
            LookForCluster();
        }
        return {};
    }
    if (part.id == IdOf<KaxSimpleBlock>()) {
        return ReadBlock(part);
    }
    return part.id == IdOf<KaxBlockGroup>() ? ReadGroup(part) : std::nullopt;
}

std::optional<Block> BlockWalker::ReadGroup(const Element& group) {
    std::optional<Block> block;
    std::optional<UINT64> duration;
    UINT64 paddingNs = 0;
    std::optional<Element> addition;
    bool refersToOthers = false;
    const bool intact = m_reader.ForEachChild(group, [&](const Element& child) {
        if (child.id == IdOf<KaxBlock>() && !block) {
            block = ReadBlock(child);
        } else if (child.id == IdOf<KaxBlockDuration>()) {
            duration = m_reader.ReadUnsigned(child);
        } else if (child.id == IdOf<KaxDiscardPadding>()) {
            paddingNs = PaddingOf(child);
        } else if (child.id == IdOf<KaxReferenceBlock>()) {
            refersToOthers = true;
        } else if (child.id == IdOf<KaxBlockAdditions>()) {
            addition = FirstAddition(child);
        }
    });
    m_damaged = m_damaged || !intact;
    if (block) {
        block->start = group.start;
        block->durationTicks = duration;
        block->paddingNs = paddingNs;
        block->keyframe = !refersToOthers;
        block->additionData = addition ? addition->data : 0;
        block->additionSize = addition ? addition->Size() : 0;
    }
    return block;
}

// The one whose identifier is 1, as it is for one that does not say.
std::optional<Element> BlockWalker::FirstAddition(const Element& additions) const {
    std::optional<Element> found;
    (void)m_reader.ForEachChild(additions, [&](const Element& more) {
        std::optional<Element> data;
        UINT64 identifier = 1;
        (void)m_reader.ForEachChild(more, [&](const Element& child) {
            if (child.id == IdOf<KaxBlockAdditional>()) {
                data = child;
            } else if (child.id == IdOf<KaxBlockAddID>()) {
                identifier = m_reader.ReadUnsigned(child, identifier);
            }
        });
        if (more.id == IdOf<KaxBlockMore>() && identifier == 1 && !found) {
            found = data;
        }
    });
    return found;
}

// A negative number is padding at the block's start, which no time of a packet can tell.
UINT64 BlockWalker::PaddingOf(const Element& element) const {
    const UINT64 value = m_reader.ReadUnsigned(element);
    const bool isNegative =
        element.Size() > 0 && element.Size() <= sizeof(value) && (value >> (element.Size() * kBitsInByte - 1) & 1) != 0;
    return isNegative ? 0 : value;
}

std::optional<Block> BlockWalker::ReadBlock(const Element& element) {
    std::array<BYTE, kMaxTrackNumberBytes + kTimeAndFlagsBytes> buffer{};
    const size_t wanted = static_cast<size_t>(std::min<UINT64>(buffer.size(), element.Size()));
    const std::span<const BYTE> head =
        std::span(buffer).first(m_reader.Source().ReadAt(element.data, std::span(buffer).first(wanted)));
    const size_t numberBytes = head.empty() ? head.size() + 1 : static_cast<size_t>(std::countl_zero(head[0])) + 1;
    if (numberBytes > kMaxTrackNumberBytes || numberBytes + kTimeAndFlagsBytes > head.size()) {
        m_damaged = true;
        return {};
    }
    Block block;
    block.start = element.start;
    block.track = codecs::ReadBigEndian(head.first(numberBytes)) & ((UINT64{1} << 7 * numberBytes) - 1);
    const auto offset = static_cast<INT16>(codecs::ReadBigEndian(head.subspan(numberBytes, sizeof(INT16))));
    block.ticks = static_cast<INT64>(m_clusterTicks) + offset;
    const BYTE flags = head[numberBytes + 2];
    block.lacing = flags & kLacingMask;
    block.keyframe = (flags & kKeyframeFlag) != 0;
    block.data = element.data + numberBytes + kTimeAndFlagsBytes;
    block.size = element.end - block.data;
    return block;
}

} // namespace matroska
