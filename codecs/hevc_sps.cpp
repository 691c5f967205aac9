#include "codecs/hevc_sps.h"

#include <vector>

#include "codecs/hevc_hrd_parameters.h"
#include "codecs/hevc_short_term_ref_pic_set.h"
#include "codecs/nal_unit.h"

namespace codecs {

namespace {

constexpr uint32_t kMaxShortTermRefPicSets = 64;
constexpr uint32_t kMaxLongTermRefPics = 32;
constexpr uint32_t kExtendedSampleAspectRatio = 255;

// Reads the parameter set in its order. Every loop is bounded, since after a bad value the reader gives zeros.
class HevcSpsParser {
  public:
    explicit HevcSpsParser(ByteView payload) : m_reader(payload) {}

    HevcSps Parse();

  private:
    void SkipOrdering();
    void SkipCodingBlocks();
    void SkipScalingLists();
    void SkipScalingList(unsigned sizeId);
    void SkipPcm();
    void SkipReferencePictures();
    void ReadVui();
    void SkipVuiDisplayWindow();
    void ReadVuiTiming();
    void ReadVuiRestrictions();
    void SkipUEs(unsigned count);

    BitstreamReader m_reader;
    HevcSps m_sps;
};

HevcSps HevcSpsParser::Parse() {
    static_cast<HevcSpsHead&>(m_sps) = ReadHevcSpsHead(m_reader);
    SkipOrdering();
    SkipCodingBlocks();
    SkipReferencePictures();
    m_reader.SkipBits(2); // sps_temporal_mvp_enabled_flag, strong_intra_smoothing_enabled_flag
    if (m_reader.ReadFlag()) {
        ReadVui();
    }
    return m_sps;
}

void HevcSpsParser::SkipOrdering() {
    const bool forEachSubLayer = m_reader.ReadFlag();
    const unsigned count = forEachSubLayer ? m_sps.maxSubLayersMinus1 + 1U : 1U;
    SkipUEs(3 * count); // picture buffering, reordering, latency
}

void HevcSpsParser::SkipCodingBlocks() {
    SkipUEs(6); // block sizes and transform depths
    if (m_reader.ReadFlag() && m_reader.ReadFlag()) {
        SkipScalingLists();
    }
    m_reader.SkipBits(2); // amp_enabled_flag, sample_adaptive_offset_enabled_flag
    if (m_reader.ReadFlag()) {
        SkipPcm();
    }
}

void HevcSpsParser::SkipScalingLists() {
    for (unsigned sizeId = 0; sizeId < 4; ++sizeId) {
        const unsigned matrices = sizeId == 3 ? 2 : 6;
        for (unsigned matrix = 0; matrix < matrices; ++matrix) {
            SkipScalingList(sizeId);
        }
    }
}

void HevcSpsParser::SkipScalingList(unsigned sizeId) {
    const bool isCoded = m_reader.ReadFlag();
    if (!isCoded) {
        m_reader.ReadUE(); // the matrix that it repeats
        return;
    }
    const bool hasDcCoefficient = sizeId > 1;
    const unsigned coefficients = sizeId == 0 ? 16 : 64;
    SkipUEs(coefficients + (hasDcCoefficient ? 1 : 0)); // signed, but as long as unsigned ones
}

void HevcSpsParser::SkipPcm() {
    m_reader.SkipBits(8); // bit depths
    SkipUEs(2);           // block sizes
    m_reader.SkipBits(1); // pcm_loop_filter_disabled_flag
}

void HevcSpsParser::SkipReferencePictures() {
    SkipHevcShortTermRefPicSets(m_reader, m_reader.ReadUE(kMaxShortTermRefPicSets));
    if (m_reader.ReadFlag()) {
        const uint32_t count = m_reader.ReadUE(kMaxLongTermRefPics);
        m_reader.SkipBits(static_cast<size_t>(count) * (m_sps.pocLsbBits + 1));
    }
}

void HevcSpsParser::ReadVui() {
    if (m_reader.ReadFlag() && m_reader.ReadBits(8) == kExtendedSampleAspectRatio) {
        m_reader.SkipBits(32);
    }
    m_sps.signal = ReadVideoSignal(m_reader);
    m_reader.SkipBits(3); // neutral chroma, field sequence, frame and field information
    SkipVuiDisplayWindow();
    ReadVuiTiming();
    ReadVuiRestrictions();
}

void HevcSpsParser::SkipVuiDisplayWindow() {
    if (m_reader.ReadFlag()) {
        SkipUEs(4);
    }
}

void HevcSpsParser::ReadVuiTiming() {
    if (!m_reader.ReadFlag()) {
        return;
    }
    m_reader.SkipBits(64); // units in a tick, time scale
    if (m_reader.ReadFlag()) {
        m_reader.ReadUE(); // vui_num_ticks_poc_diff_one_minus1
    }
    if (m_reader.ReadFlag()) {
        ReadHevcHrdParameters(m_reader, m_sps.maxSubLayersMinus1, m_sps.fixedPicRateGeneral);
    }
}

void HevcSpsParser::ReadVuiRestrictions() {
    if (m_reader.ReadFlag()) {
        m_reader.SkipBits(3); // tiles, motion vectors, reference lists
        m_sps.minSpatialSegmentationIdc = m_reader.ReadUE();
    }
}

void HevcSpsParser::SkipUEs(unsigned count) {
    for (unsigned i = 0; i < count; ++i) {
        m_reader.ReadUE();
    }
}

} // namespace

HevcSps ParseHevcSps(ByteView unit) {
    if (unit.size() < kHevcHeaderBytes) {
        return {};
    }
    const std::vector<uint8_t> payload = RawPayload(unit, kHevcHeaderBytes);
    return HevcSpsParser(payload).Parse();
}

} // namespace codecs
