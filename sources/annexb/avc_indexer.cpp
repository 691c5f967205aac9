#include "sources/annexb/avc_indexer.h"

#include <cstdint>

namespace annexb {

namespace {

constexpr size_t kMaxParameterSetBytes = size_t{64} * 1024;
// The head of a slice with weights for all references stays below.
constexpr size_t kMaxSliceHeadBytes = 4096;

constexpr BYTE kNalTypeMask = 0x1f;
enum NalType : BYTE {
    kSlice = 1,
    kPartitionA = 2,
    kIdrSlice = 5,
    kSei = 6,
    kSps = 7,
    kPps = 8,
    kDelimiter = 9,
    kSlicePrefix = 14,
    kLastReservedPrefix = 18,
};

// Whether a recovery point message says that the very next picture is right (annex D, 7.3.2.3.1 for its shape).
bool IsExactRecoveryPoint(Bytes unit) {
    constexpr UINT32 kRecoveryPoint = 6;
    constexpr BYTE kContinues = 255;
    const std::vector<BYTE> payload = RawPayload(unit, 1);
    Bytes rest = payload;
    const auto takeNumber = [&rest] {
        UINT32 number = 0;
        BYTE byte = kContinues;
        while (byte == kContinues && !rest.empty()) {
            byte = rest.front();
            number += byte;
            rest = rest.subspan(1);
        }
        return number;
    };
    while (rest.size() > 2) {
        const UINT32 type = takeNumber();
        const UINT32 size = takeNumber();
        if (size > rest.size()) {
            return false;
        }
        if (type == kRecoveryPoint) {
            codecs::BitstreamReader reader(rest.first(size));
            return reader.ReadUE() == 0 && reader.IsValid();
        }
        rest = rest.subspan(size);
    }
    return false;
}

bool IsPrefix(BYTE type) {
    return (type >= kSei && type <= kDelimiter) || (type >= kSlicePrefix && type <= kLastReservedPrefix);
}

} // namespace

PictureIndex AvcIndexer::Run() {
    UnitScanner scanner(m_source, 0, m_source.Size());
    while (const std::optional<UnitExtent> unit = scanner.Next()) {
        Take(*unit);
    }
    return m_builder.Take();
}

void AvcIndexer::Take(const UnitExtent& unit) {
    const std::vector<BYTE> header = m_builder.Read(unit, 1);
    const BYTE type = header.empty() ? BYTE{0} : static_cast<BYTE>(header[0] & kNalTypeMask);
    if (type == kSlice || type == kPartitionA || type == kIdrSlice) {
        TakeSlice(unit);
    } else if (IsPrefix(type)) {
        TakePrefix(unit, type);
    } else {
        m_builder.Extend(unit);
    }
}

void AvcIndexer::TakePrefix(const UnitExtent& unit, BYTE type) {
    m_pictureIsComplete = m_pictureIsComplete || type != kSlicePrefix; // that one stands before each slice of a picture
    m_builder.AddPrefix(unit);
    if (type == kDelimiter) {
        return;
    }
    const std::vector<BYTE> bytes = m_builder.Read(unit, kMaxParameterSetBytes);
    if (type == kSei) {
        m_mayRecover = m_mayRecover || IsExactRecoveryPoint(bytes);
    } else if (type == kSps) {
        if (const std::optional<AvcSps> sps = ParseAvcSps(bytes)) {
            m_sps[sps->id] = *sps;
            m_builder.AddParameterSet(type, sps->id, bytes);
        } else {
            m_builder.MarkDamaged();
        }
    } else if (type == kPps) {
        if (const std::optional<AvcPps> pps = ParseAvcPps(bytes)) {
            m_pps[pps->id] = *pps;
            m_builder.AddParameterSet(type, pps->id, bytes);
        } else {
            m_builder.MarkDamaged();
        }
    }
}

void AvcIndexer::TakeSlice(const UnitExtent& unit) {
    const std::vector<BYTE> head = m_builder.Read(unit, kMaxSliceHeadBytes);
    const auto pps = m_pps.find(PpsIdOf(head).value_or(UINT32_MAX));
    const auto sps = pps == m_pps.end() ? m_sps.end() : m_sps.find(pps->second.spsId);
    const std::optional<AvcSlice> slice =
        sps == m_sps.end() ? std::nullopt : ParseAvcSlice(head, sps->second, pps->second);
    if (!slice) {
        m_builder.MarkDamaged();
        m_builder.Extend(unit);
        return;
    }
    const bool belongsToLast =
        slice->isRedundant || (!m_pictureIsComplete && m_last && !BeginsNewPicture(*m_last, *slice));
    if (belongsToLast) {
        m_builder.Extend(unit);
    } else {
        TakePicture(unit, *slice, sps->second);
    }
}

void AvcIndexer::TakePicture(const UnitExtent& unit, const AvcSlice& slice, const AvcSps& sps) {
    const INT32 order = m_order.Next(slice, sps);
    const bool joins = m_isFirstField && m_last && AreFieldsOfOneFrame(*m_last, slice);
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
