#include "mkv/strict_cluster.h"

#include <algorithm>

#include <matroska/KaxBlock.h>
#include <matroska/KaxBlockData.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxClusterData.h>
#include <matroska/KaxSemantic.h>

#include "mkv/block_head.h"
#include "mkv/cluster_rule.h"

namespace mkv {

namespace {

constexpr size_t kMaxKeptBlocks = 4096; // more than five seconds of a film have
// The cluster's time, and the heads and the tail of one block.
constexpr UINT64 kMaxOtherBytes = 64;
// The offset stands in front of the flags, the last byte of a block's head.
constexpr size_t kOffsetAndFlagsBytes = kOffsetBytes + 1;

bool IsGroup(const CStrictCluster::Block& block) {
    return block.isText || block.hasAddition || block.discardPaddingNs > 0;
}

// Around the addition; its identifier is the one that holds for those that do not say.
CElementBytes AdditionHead(UINT64 bytes) {
    const UINT64 more = CElementBytes::elementBytes(EBML_ID(libmatroska::KaxBlockAdditional), bytes);
    CElementBytes head;
    head.addHead(EBML_ID(libmatroska::KaxBlockAdditions),
                 CElementBytes::elementBytes(EBML_ID(libmatroska::KaxBlockMore), more));
    head.addHead(EBML_ID(libmatroska::KaxBlockMore), more);
    head.addHead(EBML_ID(libmatroska::KaxBlockAdditional), bytes);
    return head;
}

void Append(std::vector<BYTE>& bytes, std::span<const BYTE> more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

// What stands behind the block in its group. A duration that is not known, or 0, is not said.
std::vector<BYTE> GroupTail(const CStrictCluster::Block& block, std::span<const BYTE> addition) {
    std::vector<BYTE> tail;
    if (block.hasAddition) {
        Append(tail, AdditionHead(addition.size()).bytes());
        Append(tail, addition);
    }
    CElementBytes numbers;
    const auto durationMs = static_cast<UINT64>(block.times.endMs - block.times.startMs);
    if (durationMs > 0) {
        numbers.addNumber(EBML_ID(libmatroska::KaxBlockDuration), durationMs);
    }
    if (block.discardPaddingNs > 0) {
        numbers.addSigned(EBML_ID(libmatroska::KaxDiscardPadding), block.discardPaddingNs);
    }
    Append(tail, numbers.bytes());
    return tail;
}

CElementBytes TimeElement(INT64 timeMs) {
    CElementBytes time;
    time.addNumber(EBML_ID(libmatroska::KaxClusterTimecode), static_cast<UINT64>(timeMs));
    return time;
}

} // namespace

bool CStrictCluster::isTooSmallFor(INT64 startMs, UINT64 payloadBytes) const {
    return ExceedsStrictCluster(std::max(m_latestMs, startMs) - std::min(m_earliestMs, startMs),
                                m_bytes.totalBytes() + payloadBytes + kMaxOtherBytes, m_blocks.size() + 1, m_maxSpanMs);
}

void CStrictCluster::add(const Block& block, const FrameBytes& frame, std::span<const BYTE> addition) {
    const UINT64 dataBytes = BlockDataBytes(block.track, frame.bytes.size());
    CElementBytes head;
    std::vector<BYTE> tail;
    if (IsGroup(block)) {
        const libebml::EbmlId& blockId = EBML_ID(libmatroska::KaxBlock);
        tail = GroupTail(block, addition);
        head.addHead(EBML_ID(libmatroska::KaxBlockGroup),
                     CElementBytes::elementBytes(blockId, dataBytes) + tail.size());
        head.addHead(blockId, dataBytes);
        AddBlockHead(head, block.track, 0, 0);
    } else {
        head.addHead(EBML_ID(libmatroska::KaxSimpleBlock), dataBytes);
        AddBlockHead(head, block.track, 0, block.isKeyframe ? kKeyframeFlag : BYTE{0});
    }
    PlacedBlock placed{block};
    placed.payloadBytes = frame.bytes.size() + addition.size();
    placed.position = m_bytes.totalBytes();
    placed.offsetPlace = m_bytes.nextPlace() + head.bytes().size() - kOffsetAndFlagsBytes;
    m_blocks.push_back(placed);
    try {
        m_bytes.append(head.bytes(), frame, tail);
    } catch (...) {
        m_blocks.pop_back();
        throw;
    }
    const bool isFirst = m_blocks.size() == 1;
    m_earliestMs = isFirst ? block.times.startMs : std::min(m_earliestMs, block.times.startMs);
    m_latestMs = isFirst ? block.times.startMs : std::max(m_latestMs, block.times.startMs);
    m_latestEndMs = isFirst ? block.times.endMs : std::max(m_latestEndMs, block.times.endMs);
}

UINT64 CStrictCluster::timeBytes(INT64 shiftMs) const {
    return TimeElement(m_earliestMs + shiftMs).bytes().size();
}

void CStrictCluster::write(CGatheringIO& io, INT64 shiftMs) {
    for (const PlacedBlock& block : m_blocks) {
        const auto offset = static_cast<UINT16>(block.times.startMs - m_earliestMs); // no more than a cluster's span
        const BYTE bytes[kOffsetBytes] = {static_cast<BYTE>(offset >> 8), static_cast<BYTE>(offset)};
        m_bytes.overwrite(block.offsetPlace, bytes);
    }
    const CElementBytes time = TimeElement(m_earliestMs + shiftMs);
    CElementBytes head;
    head.addHead(EBML_ID(libmatroska::KaxCluster), time.bytes().size() + m_bytes.totalBytes());
    head.addBytes(time.bytes());
    io.writeParts(m_bytes.partsBehind(head.bytes()));
}

void CStrictCluster::clear() noexcept {
    m_bytes.reset();
    if (m_blocks.capacity() > kMaxKeptBlocks) {
        std::vector<PlacedBlock>().swap(m_blocks);
    }
    m_blocks.clear();
}

} // namespace mkv
