#include "sources/annexb/hevc_indexer.h"

#include <cstdint>

#include "codecs/nal_unit.h"

namespace annexb {

namespace {

constexpr size_t kMaxHevcSliceHeadBytes = 256; // up to the picture order count

bool BeginsAccessUnit(BYTE type) {
    return (type >= codecs::kHevcVpsUnit && type <= codecs::kHevcDelimiter) || type == codecs::kHevcPrefixSei ||
           (type >= codecs::kHevcFirstReservedPrefix && type <= codecs::kHevcLastReservedPrefix) ||
           (type >= codecs::kHevcFirstUnspecifiedPrefix && type <= codecs::kHevcLastUnspecifiedPrefix);
}

} // namespace

PictureIndex HevcIndexer::Run() {
    while (const std::optional<UnitExtent> unit = m_scanner.Next()) {
        Take(*unit);
    }
    return m_builder.Take();
}

void HevcIndexer::Take(const UnitExtent& unit) {
    const codecs::ByteView bytes = m_scanner.HeadOf(unit, codecs::kHevcHeaderBytes);
    const codecs::NALUnit header(bytes);
    if (header.Length() < codecs::kHevcHeaderBytes) {
        m_builder.MarkDamaged();
        return;
    }
    const BYTE type = header.HevcType();
    const bool isBaseLayer = header.HevcLayerId() == 0;
    if (!isBaseLayer && type > codecs::kHevcLastSlice) {
        m_builder.AddOfOtherLayer(unit);
    } else if (!isBaseLayer) {
        m_builder.Extend(unit);
    } else if (type <= codecs::kHevcLastSlice) {
        TakeSlice(unit);
    } else if (BeginsAccessUnit(type)) {
        TakePrefix(unit, type);
    } else {
        if (type == codecs::kHevcEndOfSequence || type == codecs::kHevcEndOfStream) {
            m_order.EndSequence();
        }
        m_builder.Extend(unit);
    }
}

void HevcIndexer::TakePrefix(const UnitExtent& unit, BYTE type) {
    m_builder.AddPrefix(unit);
    if (type < codecs::kHevcVpsUnit || type > codecs::kHevcPpsUnit) {
        return;
    }
    const codecs::ByteView bytes = m_scanner.HeadOf(unit, IndexBuilder::kMaxParameterSetBytes);
    if (type == codecs::kHevcVpsUnit) {
        const UINT32 id = bytes.size() > codecs::kHevcHeaderBytes ? bytes[codecs::kHevcHeaderBytes] >> 4 : 0;
        m_builder.AddParameterSet(type, id, bytes);
    } else if (type == codecs::kHevcSpsUnit) {
        const std::optional<codecs::HevcSpsHead> sps = codecs::ParseHevcSpsHead(bytes);
        if (!sps) {
            m_builder.MarkDamaged();
            return;
        }
        m_sps[sps->id] = *sps;
        m_builder.AddParameterSet(type, sps->id, bytes);
    } else {
        const std::optional<codecs::HevcPpsHead> pps = codecs::ParseHevcPpsHead(bytes);
        if (!pps) {
            m_builder.MarkDamaged();
            return;
        }
        m_pps[pps->id] = *pps;
        m_builder.AddParameterSet(type, pps->id, bytes);
    }
}

void HevcIndexer::TakeSlice(const UnitExtent& unit) {
    const codecs::ByteView head = m_scanner.HeadOf(unit, kMaxHevcSliceHeadBytes);
    if (!codecs::IsFirstHevcSegment(head)) {
        m_builder.Extend(unit);
        return;
    }
    const auto pps = m_pps.find(codecs::HevcPpsIdOf(head).value_or(UINT32_MAX));
    const auto sps = pps == m_pps.end() ? m_sps.end() : m_sps.find(pps->second.spsId);
    const std::optional<codecs::HevcSlice> slice =
        sps == m_sps.end() ? std::nullopt : codecs::ParseHevcSlice(head, sps->second, pps->second);
    if (!slice) {
        m_builder.MarkDamaged();
        m_builder.Extend(unit);
        return;
    }
    const INT32 order = m_order.Next(*slice);
    m_builder.SetShape(sps->second.Shape(), 0, 0);
    m_builder.BeginPicture(unit, m_order.Sequence(), order, slice->IsIrap());
}

PictureIndex IndexHevc(const source::ByteSource& source) {
    return HevcIndexer(source).Run();
}

} // namespace annexb
