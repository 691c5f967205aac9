#include "codecs/hevc_hrd_parameters.h"

namespace codecs {

namespace {

constexpr uint32_t kMaxCodedPictureBuffersMinus1 = 31;

struct CommonParameters {
    bool hasNal = false;
    bool hasVcl = false;
    bool hasSubPicture = false;
};

CommonParameters ReadCommonParameters(BitstreamReader& reader) {
    CommonParameters common;
    common.hasNal = reader.ReadFlag();
    common.hasVcl = reader.ReadFlag();
    if (!common.hasNal && !common.hasVcl) {
        return common;
    }
    common.hasSubPicture = reader.ReadFlag();
    if (common.hasSubPicture) {
        reader.SkipBits(8 + 5 + 1 + 5); // tick divisor, delay lengths, place of the parameters
    }
    reader.SkipBits(4 + 4); // bit rate and buffer size scales
    if (common.hasSubPicture) {
        reader.SkipBits(4); // cpb_size_du_scale
    }
    reader.SkipBits(5 + 5 + 5); // delay lengths
    return common;
}

void SkipBufferParameters(BitstreamReader& reader, uint32_t buffers, bool hasSubPicture) {
    const unsigned numbers = hasSubPicture ? 4 : 2;
    for (uint32_t buffer = 0; buffer < buffers; ++buffer) {
        for (unsigned number = 0; number < numbers; ++number) {
            reader.ReadUE();
        }
        reader.SkipBits(1); // cbr_flag
    }
}

bool ReadSubLayer(BitstreamReader& reader, const CommonParameters& common) {
    const bool isFixedGeneral = reader.ReadFlag();
    // A rate that is fixed in general is fixed within the coded video sequence too, and the flag is then left out.
    const bool isFixedWithinSequence = isFixedGeneral || reader.ReadFlag();
    bool isLowDelay = false;
    if (isFixedWithinSequence) {
        reader.ReadUE(); // elemental_duration_in_tc_minus1
    } else {
        isLowDelay = reader.ReadFlag();
    }
    const uint32_t buffers = isLowDelay ? 1 : reader.ReadUE(kMaxCodedPictureBuffersMinus1) + 1;
    for (const bool isPresent : {common.hasNal, common.hasVcl}) {
        if (isPresent) {
            SkipBufferParameters(reader, buffers, common.hasSubPicture);
        }
    }
    return isFixedGeneral;
}

} // namespace

void ReadHevcHrdParameters(BitstreamReader& reader, unsigned maxSubLayersMinus1,
                           std::array<bool, kHevcMaxSubLayers>& fixedPicRateGeneral) {
    const CommonParameters common = ReadCommonParameters(reader);
    for (unsigned layer = 0; layer <= maxSubLayersMinus1 && layer < fixedPicRateGeneral.size(); ++layer) {
        fixedPicRateGeneral[layer] = ReadSubLayer(reader, common);
    }
}

} // namespace codecs
