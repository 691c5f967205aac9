#include "codecs/avc_slice.h"

#include "codecs/bitstream_reader.h"
#include "codecs/nal_unit.h"

namespace codecs {

namespace {

constexpr uint32_t kMaxSliceType = 9;
constexpr unsigned kMaxListChanges = 66; // for 32 fields, and the end
constexpr unsigned kMaxMarkings = 66;

enum SliceType : uint32_t { kP = 0, kB = 1, kI = 2, kSp = 3, kSi = 4 };

class AvcSliceParser {
  public:
    AvcSliceParser(const NALUnit& unit, ByteView payload, const AvcSps& sps, const AvcPps& pps)
        : m_reader(payload), m_sps(sps), m_pps(pps) {
        m_slice.isIdr = unit.AvcType() == kAvcIdrSlice;
        m_slice.isReference = unit.AvcRefIdc() != 0;
    }

    [[nodiscard]] std::optional<AvcSlice> Parse();

  private:
    void ReadPictureOrder();
    void SkipReferenceLists();
    void SkipListChanges();
    void SkipWeights();
    void ReadMarkings();

    [[nodiscard]] bool IsB() const { return m_type == kB; }
    [[nodiscard]] bool IsIntra() const { return m_type == kI || m_type == kSi; }

    BitstreamReader m_reader;
    const AvcSps& m_sps;
    const AvcPps& m_pps;
    uint32_t m_type = 0;
    uint32_t m_entries[2] = {0, 0};
    AvcSlice m_slice;
};

std::optional<AvcSlice> AvcSliceParser::Parse() {
    m_reader.ReadUE(); // first_mb_in_slice
    m_type = m_reader.ReadUE(kMaxSliceType) % 5;
    m_slice.ppsId = m_reader.ReadUE(kAvcMaxPpsId);
    if (m_sps.separateColourPlanes) {
        m_reader.ReadBits(2);
    }
    m_slice.frameNum = m_reader.ReadBits(m_sps.frameNumBits);
    if (!m_sps.frameMbsOnly) {
        m_slice.isField = m_reader.ReadFlag();
        m_slice.isBottom = m_slice.isField && m_reader.ReadFlag();
    }
    if (m_slice.isIdr) {
        m_slice.idrPicId = m_reader.ReadUE();
    }
    ReadPictureOrder();
    m_slice.isRedundant = m_pps.redundantPicCntPresent && m_reader.ReadUE() != 0;
    if (!m_reader.IsValid()) {
        return {};
    }
    if (m_slice.isReference && !m_slice.isIdr) {
        SkipReferenceLists();
        ReadMarkings();
    }
    return m_slice;
}

void AvcSliceParser::ReadPictureOrder() {
    const bool hasBottomDelta = m_pps.bottomFieldPicOrderPresent && !m_slice.isField;
    if (m_sps.pocType == 0) {
        m_slice.pocLsb = m_reader.ReadBits(m_sps.pocLsbBits);
        m_slice.deltaPocBottom = hasBottomDelta ? m_reader.ReadSE() : 0;
    } else if (m_sps.pocType == 1 && !m_sps.deltaPicOrderAlwaysZero) {
        m_slice.deltaPoc[0] = m_reader.ReadSE();
        m_slice.deltaPoc[1] = hasBottomDelta ? m_reader.ReadSE() : 0;
    }
}

void AvcSliceParser::SkipReferenceLists() {
    if (IsB()) {
        m_reader.ReadFlag(); // direct_spatial_mv_pred_flag
    }
    if (IsIntra()) {
        return;
    }
    m_entries[0] = m_pps.refIdxDefault[0];
    m_entries[1] = m_pps.refIdxDefault[1];
    if (m_reader.ReadFlag()) {
        m_entries[0] = m_reader.ReadUE(kAvcMaxRefIdx) + 1;
        m_entries[1] = IsB() ? m_reader.ReadUE(kAvcMaxRefIdx) + 1 : 0;
    }
    SkipListChanges();
    if (IsB()) {
        SkipListChanges();
    }
    if ((m_pps.weightedPrediction && !IsB()) || (m_pps.weightedBiprediction == 1 && IsB())) {
        SkipWeights();
    }
}

void AvcSliceParser::SkipListChanges() {
    constexpr uint32_t kEnd = 3;
    if (!m_reader.ReadFlag()) {
        return;
    }
    for (unsigned i = 0; i < kMaxListChanges && m_reader.ReadUE(5) != kEnd && m_reader.IsValid(); ++i) {
        m_reader.ReadUE();
    }
}

void AvcSliceParser::SkipWeights() {
    const bool hasChroma = !m_sps.isMonochrome && !m_sps.separateColourPlanes;
    m_reader.ReadUE(); // luma_log2_weight_denom
    if (hasChroma) {
        m_reader.ReadUE();
    }
    for (int list = 0; list < (IsB() ? 2 : 1); ++list) {
        for (uint32_t i = 0; i < m_entries[list]; ++i) {
            const int luma = m_reader.ReadFlag() ? 2 : 0;
            for (int value = 0; value < luma; ++value) {
                m_reader.SkipSE();
            }
            const int chroma = hasChroma && m_reader.ReadFlag() ? 4 : 0;
            for (int value = 0; value < chroma; ++value) {
                m_reader.SkipSE();
            }
        }
    }
}

void AvcSliceParser::ReadMarkings() {
    constexpr uint32_t kEnd = 0;
    constexpr uint32_t kLongTermOfShortTerm = 3;
    constexpr uint32_t kForgetAll = 5;
    if (!m_reader.ReadFlag()) {
        return;
    }
    for (unsigned i = 0; i < kMaxMarkings && m_reader.IsValid(); ++i) {
        const uint32_t operation = m_reader.ReadUE(6);
        if (operation == kEnd) {
            return;
        }
        m_slice.resetsOrder = m_slice.resetsOrder || operation == kForgetAll;
        if (operation != kForgetAll) {
            m_reader.ReadUE();
        }
        if (operation == kLongTermOfShortTerm) {
            m_reader.ReadUE();
        }
    }
}

} // namespace

std::optional<uint32_t> AvcPpsIdOf(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit, kAvcHeaderBytes);
    BitstreamReader reader(payload);
    reader.ReadUE();
    reader.ReadUE(kMaxSliceType);
    const uint32_t id = reader.ReadUE(kAvcMaxPpsId);
    return reader.IsValid() ? std::optional(id) : std::nullopt;
}

std::optional<AvcSlice> ParseAvcSlice(ByteView unit, const AvcSps& sps, const AvcPps& pps) {
    if (unit.empty()) {
        return {};
    }
    const std::vector<uint8_t> payload = RawPayload(unit, kAvcHeaderBytes);
    return AvcSliceParser(NALUnit(unit), payload, sps, pps).Parse();
}

bool BeginsNewPicture(const AvcSlice& previous, const AvcSlice& next) {
    return previous.frameNum != next.frameNum || previous.ppsId != next.ppsId || previous.isField != next.isField ||
           previous.isBottom != next.isBottom || previous.isReference != next.isReference ||
           previous.isIdr != next.isIdr || previous.idrPicId != next.idrPicId || previous.pocLsb != next.pocLsb ||
           previous.deltaPocBottom != next.deltaPocBottom || previous.deltaPoc[0] != next.deltaPoc[0] ||
           previous.deltaPoc[1] != next.deltaPoc[1];
}

bool AreFieldsOfOneFrame(const AvcSlice& first, const AvcSlice& second) {
    return first.isField && second.isField && first.isBottom != second.isBottom && first.frameNum == second.frameNum &&
           first.isReference == second.isReference && !second.isIdr;
}

} // namespace codecs
