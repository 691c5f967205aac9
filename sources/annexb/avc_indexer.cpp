#include "sources/annexb/avc_indexer.h"

#include <cstdint>

#include "codecs/avc_sei.h"
#include "codecs/nal_unit.h"

namespace annexb {

namespace {

// The head of a slice with weights for all references stays below.
constexpr size_t kMaxAvcSliceHeadBytes = 4096;

bool IsPrefix(BYTE type) {
    return (type >= codecs::kAvcSeiUnit && type <= codecs::kAvcDelimiter) ||
           (type >= codecs::kAvcSlicePrefix && type <= codecs::kAvcLastReservedPrefix);
}

} // namespace

PictureIndex AvcIndexer::Run() {
    while (const std::optional<UnitExtent> unit = m_scanner.Next()) {
        Take(*unit);
    }
    return m_builder.Take();
}

void AvcIndexer::Take(const UnitExtent& unit) {
    const codecs::ByteView header = m_scanner.HeadOf(unit, codecs::kAvcHeaderBytes);
    const BYTE type = codecs::NALUnit(header).AvcType();
    if (type == codecs::kAvcNonIdrSlice || type == codecs::kAvcPartitionA || type == codecs::kAvcIdrSlice) {
        TakeSlice(unit);
    } else if (IsPrefix(type)) {
        TakePrefix(unit, type);
    } else {
        m_builder.Extend(unit);
    }
}

void AvcIndexer::TakePrefix(const UnitExtent& unit, BYTE type) {
    m_pictureIsComplete =
        m_pictureIsComplete || type != codecs::kAvcSlicePrefix; // that one stands before each slice of a picture
    m_builder.AddPrefix(unit);
    if (type == codecs::kAvcDelimiter) {
        return;
    }
    const codecs::ByteView bytes = m_scanner.HeadOf(unit, IndexBuilder::kMaxParameterSetBytes);
    if (type == codecs::kAvcSeiUnit) {
        m_mayRecover = m_mayRecover || codecs::IsExactRecoveryPoint(bytes);
    } else if (type == codecs::kAvcSpsUnit) {
        if (const std::optional<codecs::AvcSps> sps = codecs::ParseAvcSps(bytes)) {
            m_sps[sps->id] = *sps;
            m_builder.AddParameterSet(type, sps->id, bytes);
        } else {
            m_builder.MarkDamaged();
        }
    } else if (type == codecs::kAvcPpsUnit) {
        if (const std::optional<codecs::AvcPps> pps = codecs::ParseAvcPps(bytes)) {
            m_pps[pps->id] = *pps;
            m_builder.AddParameterSet(type, pps->id, bytes);
        } else {
            m_builder.MarkDamaged();
        }
    }
}

void AvcIndexer::TakeSlice(const UnitExtent& unit) {
    const codecs::ByteView head = m_scanner.HeadOf(unit, kMaxAvcSliceHeadBytes);
    const auto pps = m_pps.find(codecs::AvcPpsIdOf(head).value_or(UINT32_MAX));
    const auto sps = pps == m_pps.end() ? m_sps.end() : m_sps.find(pps->second.spsId);
    const std::optional<codecs::AvcSlice> slice =
        sps == m_sps.end() ? std::nullopt : codecs::ParseAvcSlice(head, sps->second, pps->second);
    if (!slice) {
        m_builder.MarkDamaged();
        m_builder.Extend(unit);
        return;
    }
    const bool belongsToLast =
        slice->isRedundant || (!m_pictureIsComplete && m_last && !codecs::BeginsNewPicture(*m_last, *slice));
    if (belongsToLast) {
        m_builder.Extend(unit);
    } else {
        TakePicture(unit, *slice, sps->second);
    }
}

void AvcIndexer::TakePicture(const UnitExtent& unit, const codecs::AvcSlice& slice, const codecs::AvcSps& sps) {
    const INT32 order = m_order.Next(slice, sps);
    const bool joins = m_isFirstField && m_last && codecs::AreFieldsOfOneFrame(*m_last, slice);
    m_builder.SetShape(sps.shape, sps.profile, sps.level);
    if (joins) {
        m_builder.JoinField(unit, order);
    } else {
        m_sequence += slice.isIdr || slice.resetsOrder ? 1 : 0;
        m_builder.BeginPicture(unit, m_sequence, order, slice.isIdr || m_mayRecover);
    }
    m_isFirstField = slice.isField && !joins;
    m_pictureIsComplete = false;
    m_mayRecover = false;
    m_last = slice;
}

PictureIndex IndexAvc(const source::ByteSource& source) {
    return AvcIndexer(source).Run();
}

} // namespace annexb
