#include "sources/annexb/hevc_indexer.h"

#include "codecs/bitstream_reader.h"
#include "codecs/nal_unit.h"

namespace annexb {

namespace {

constexpr size_t kMaxParameterSetBytes = size_t{64} * 1024;
constexpr size_t kMaxSliceHeadBytes = 256; // up to the picture order count
constexpr size_t kHeaderBytes = 2;
constexpr UINT32 kMaxPpsId = 63;

enum NalType : BYTE {
    kLastSubLayerPicture = 15,
    kFirstRadl = 6,
    kLastRasl = 9,
    kFirstIrap = 16,
    kLastBla = 18,
    kFirstIdr = 19,
    kLastIdr = 20,
    kLastIrap = 23,
    kLastSlice = 31,
    kVps = 32,
    kSps = 33,
    kPps = 34,
    kDelimiter = 35,
    kEndOfSequence = 36,
    kEndOfStream = 37,
    kPrefixSei = 39,
};

bool IsIrap(BYTE type) {
    return type >= kFirstIrap && type <= kLastIrap;
}

bool IsIdr(BYTE type) {
    return type == kFirstIdr || type == kLastIdr;
}

bool BeginsAccessUnit(BYTE type) {
    return (type >= kVps && type <= kDelimiter) || type == kPrefixSei || (type >= 41 && type <= 44) ||
           (type >= 48 && type <= 55);
}

// Others are never counted from leading pictures nor from those that their own sub-layer does not refer to.
bool IsCountedFrom(BYTE type, BYTE temporalId) {
    const bool isLeading = type >= kFirstRadl && type <= kLastRasl;
    const bool isUnreferenced = type < kLastSubLayerPicture && type % 2 == 0;
    return temporalId == 0 && !isLeading && !isUnreferenced;
}

} // namespace

PictureIndex HevcIndexer::Run() {
    UnitScanner scanner(m_source, 0, m_source.Size());
    while (const std::optional<UnitExtent> unit = scanner.Next()) {
        Take(*unit);
    }
    return m_builder.Take();
}

void HevcIndexer::Take(const UnitExtent& unit) {
    const std::vector<BYTE> header = m_builder.Read(unit, kHeaderBytes);
    if (header.size() < kHeaderBytes) {
        m_builder.MarkDamaged();
        return;
    }
    const auto type = static_cast<BYTE>(header[0] >> 1 & 0x3f);
    const bool isBaseLayer = (header[0] & 1) == 0 && header[1] >> 3 == 0;
    if (!isBaseLayer && type > kLastSlice) {
        m_builder.AddOfOtherLayer(unit);
    } else if (!isBaseLayer) {
        m_builder.Extend(unit);
    } else if (type <= kLastSlice) {
        TakeSlice(unit);
    } else if (BeginsAccessUnit(type)) {
        TakePrefix(unit, type);
    } else {
        m_beginsSequence = m_beginsSequence || type == kEndOfSequence || type == kEndOfStream;
        m_builder.Extend(unit);
    }
}

void HevcIndexer::TakePrefix(const UnitExtent& unit, BYTE type) {
    m_builder.AddPrefix(unit);
    if (type < kVps || type > kPps) {
        return;
    }
    const std::vector<BYTE> bytes = m_builder.Read(unit, kMaxParameterSetBytes);
    if (type == kVps) {
        const UINT32 id = bytes.size() > kHeaderBytes ? bytes[kHeaderBytes] >> 4 : 0;
        m_builder.AddParameterSet(type, id, bytes);
    } else if (type == kSps) {
        const std::optional<HevcSpsHead> sps = ParseHevcSpsHead(bytes);
        if (!sps) {
            m_builder.MarkDamaged();
            return;
        }
        m_sps[sps->id] = *sps;
        m_builder.AddParameterSet(type, sps->id, bytes);
    } else {
        const std::optional<HevcPpsHead> pps = ParseHevcPpsHead(bytes);
        if (!pps) {
            m_builder.MarkDamaged();
            return;
        }
        m_pps[pps->id] = *pps;
        m_builder.AddParameterSet(type, pps->id, bytes);
    }
}

void HevcIndexer::TakeSlice(const UnitExtent& unit) {
    const std::vector<BYTE> head = m_builder.Read(unit, kMaxSliceHeadBytes);
    const bool isFirstSegment = head.size() > kHeaderBytes && (head[kHeaderBytes] & 0x80) != 0;
    const std::optional<Slice> slice = isFirstSegment ? ParseSlice(head) : std::nullopt;
    if (!slice) {
        if (isFirstSegment) {
            m_builder.MarkDamaged();
        }
        m_builder.Extend(unit);
        return;
    }
    const INT32 order = OrderOf(*slice);
    m_builder.SetShape(slice->shape, 0, 0);
    m_builder.BeginPicture(unit, m_sequence, order, IsIrap(slice->type));
}

std::optional<HevcIndexer::Slice> HevcIndexer::ParseSlice(codecs::ByteView unit) const {
    Slice slice;
    slice.type = static_cast<BYTE>(unit[0] >> 1 & 0x3f);
    slice.temporalId = static_cast<BYTE>((unit[1] & 7) - 1);
    const std::vector<BYTE> payload = codecs::RawPayload(unit, kHeaderBytes);
    codecs::BitstreamReader reader(payload);
    reader.ReadFlag(); // first_slice_segment_in_pic_flag
    if (IsIrap(slice.type)) {
        reader.ReadFlag(); // no_output_of_prior_pics_flag
    }
    const auto pps = m_pps.find(reader.ReadUE(kMaxPpsId));
    const auto sps = pps == m_pps.end() ? m_sps.end() : m_sps.find(pps->second.spsId);
    if (!reader.IsValid() || sps == m_sps.end()) {
        return {};
    }
    reader.SkipBits(pps->second.extraSliceHeaderBits);
    reader.ReadUE(); // slice_type
    if (pps->second.outputFlagPresent) {
        reader.ReadFlag();
    }
    if (sps->second.separateColourPlanes) {
        reader.ReadBits(2);
    }
    slice.pocLsbBits = sps->second.pocLsbBits;
    slice.pocLsb = IsIdr(slice.type) ? 0 : reader.ReadBits(slice.pocLsbBits);
    slice.shape = sps->second.shape;
    return reader.IsValid() ? std::optional(slice) : std::nullopt;
}

// ITU-T H.265, 8.3.1.
INT32 HevcIndexer::OrderOf(const Slice& slice) {
    const bool beginsSequence = IsIrap(slice.type) && (m_beginsSequence || slice.type <= kLastIdr);
    m_beginsSequence = m_beginsSequence && !beginsSequence;
    const INT64 range = INT64{1} << slice.pocLsbBits;
    const auto lsb = static_cast<INT64>(slice.pocLsb);
    INT64 order = lsb;
    if (beginsSequence) {
        ++m_sequence;
    } else {
        const INT64 lastLsb = m_lastOrder & (range - 1);
        order += m_lastOrder - lastLsb;
        if (lsb < lastLsb && lastLsb - lsb >= range / 2) {
            order += range;
        } else if (lsb > lastLsb && lsb - lastLsb > range / 2) {
            order -= range;
        }
    }
    if (IsCountedFrom(slice.type, slice.temporalId)) {
        m_lastOrder = order;
    }
    return static_cast<INT32>(order);
}

PictureIndex IndexHevc(const source::ByteSource& source) {
    return HevcIndexer(source).Run();
}

} // namespace annexb
