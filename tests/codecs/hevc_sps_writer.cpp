#include "tests/codecs/hevc_sps_writer.h"

#include <algorithm>
#include <string_view>

namespace mkv_test {

namespace {

// Values that do not matter: neither 0 nor all ones, so that a wrong width shows.
constexpr uint64_t kFiller = 0x5a5a5a5a5a5a5a5aULL;

void WriteProfileTierLevel(BitWriter& bits, const HevcSpsShape& shape) {
    bits.Bits(shape.profileSpace, 2).Flag(shape.tier).Bits(shape.profileIdc, 5);
    bits.Bits(shape.compatibilityFlags, 32).Bits(shape.constraintFlags, 48).Bits(shape.level, 8);
    std::vector<SubLayerPresence> layers = shape.subLayers;
    layers.resize(shape.maxSubLayersMinus1);
    for (const SubLayerPresence& layer : layers) {
        bits.Flag(layer.profile).Flag(layer.level);
    }
    for (unsigned i = shape.maxSubLayersMinus1; shape.maxSubLayersMinus1 > 0 && i < 8; ++i) {
        bits.Bits(0, 2);
    }
    for (const SubLayerPresence& layer : layers) {
        bits.Bits(0x0160000000900000ULL, layer.profile ? 64 : 0).Bits(0, layer.profile ? 24 : 0);
        bits.Bits(90, layer.level ? 8 : 0);
    }
}

void WriteScalingLists(BitWriter& bits) {
    for (unsigned sizeId = 0; sizeId < 4; ++sizeId) {
        for (unsigned matrix = 0; matrix < (sizeId == 3 ? 2U : 6U); ++matrix) {
            const bool isCoded = matrix % 2 == 0;
            bits.Flag(isCoded);
            if (!isCoded) {
                bits.UE(1); // the list before
                continue;
            }
            if (sizeId > 1) {
                bits.UE(14); // -7: the DC coefficient
            }
            bits.UE(23); // +12
            bits.UEs(1, 7).UEs(2, 8).UEs(0, sizeId == 0 ? 0 : 48);
        }
    }
}

void WriteShortTermSet(BitWriter& bits, const ShortTermSet& set, bool isFirst) {
    if (!isFirst) {
        bits.Flag(set.isPredicted);
    }
    if (set.isPredicted) {
        bits.Flag(set.isNegative).UE(set.absDeltaMinus1);
        for (const std::string_view flags : set.flags) {
            for (const char flag : flags) {
                bits.Flag(flag == '1');
            }
        }
        return;
    }
    bits.UE(set.negativeMinus1.size()).UE(set.positiveMinus1.size());
    for (const auto& list : {set.negativeMinus1, set.positiveMinus1}) {
        for (const uint32_t delta : list) {
            bits.UE(delta).Flag(true);
        }
    }
}

void WriteHrd(BitWriter& bits, const Hrd& hrd) {
    bits.Flag(hrd.hasNal).Flag(hrd.hasVcl);
    if (hrd.hasNal || hrd.hasVcl) {
        bits.Flag(hrd.hasSubPicture).Bits(kFiller, hrd.hasSubPicture ? 19 : 0);
        bits.Bits(kFiller, 8).Bits(kFiller, hrd.hasSubPicture ? 4 : 0).Bits(kFiller, 15);
    }
    for (const HrdSubLayer& layer : hrd.subLayers) {
        bits.Flag(layer.isFixedGeneral);
        if (!layer.isFixedGeneral) {
            bits.Flag(layer.isFixedWithinSequence);
        }
        if (layer.isFixedGeneral || layer.isFixedWithinSequence) {
            bits.UE(5); // elemental duration
        } else {
            bits.Flag(layer.isLowDelay);
        }
        if (!layer.isLowDelay) {
            bits.UE(layer.buffersMinus1);
        }
        const unsigned kinds = (hrd.hasNal ? 1U : 0U) + (hrd.hasVcl ? 1U : 0U);
        for (unsigned i = 0; i < kinds * (layer.buffersMinus1 + 1); ++i) {
            bits.UEs(1000 + i, hrd.hasSubPicture ? 4 : 2).Flag(true);
        }
    }
}

void WriteVui(BitWriter& bits, const Vui& vui) {
    bits.Flag(vui.aspectRatioIdc.has_value());
    if (vui.aspectRatioIdc) {
        bits.Bits(*vui.aspectRatioIdc, 8).Bits(kFiller, *vui.aspectRatioIdc == 255 ? 32 : 0);
    }
    WriteSignal(bits, vui.signal);
    bits.Bits(0, 3);
    bits.Flag(vui.hasDisplayWindow).UEs(7, vui.hasDisplayWindow ? 4 : 0);
    bits.Flag(vui.hasTiming);
    if (vui.hasTiming) {
        bits.Bits(1, 32).Bits(25, 32).Flag(vui.hasPocProportional).UEs(0, vui.hasPocProportional ? 1 : 0);
        bits.Flag(vui.hrd.has_value());
        if (vui.hrd) {
            WriteHrd(bits, *vui.hrd);
        }
    }
    bits.Flag(vui.minSpatialSegmentationIdc.has_value());
    if (vui.minSpatialSegmentationIdc) {
        bits.Bits(2, 3).UE(*vui.minSpatialSegmentationIdc).UE(2).UE(1).UEs(15, 2);
    }
}

void WritePictureFormat(BitWriter& bits, const HevcSpsShape& shape) {
    bits.UE(shape.chromaFormatIdc).Bits(0, shape.chromaFormatIdc == 3 ? 1 : 0);
    bits.UE(320).UE(240);
    bits.Flag(shape.hasConformanceWindow).UEs(4, shape.hasConformanceWindow ? 4 : 0);
    bits.UE(shape.bitDepthLumaMinus8).UE(shape.bitDepthChromaMinus8);
    bits.UE(shape.log2MaxPocLsbMinus4);
    bits.Flag(shape.hasOrderingForEachSubLayer);
    const unsigned layers = shape.hasOrderingForEachSubLayer ? shape.maxSubLayersMinus1 + 1 : 1;
    for (unsigned i = 0; i < layers; ++i) {
        bits.UE(4).UE(2).UE(5);
    }
}

void WriteTools(BitWriter& bits, const HevcSpsShape& shape) {
    bits.UE(0).UE(3).UE(0).UE(3).UE(1).UE(2);
    bits.Flag(shape.scalingLists != ScalingLists::Off);
    if (shape.scalingLists != ScalingLists::Off) {
        bits.Flag(shape.scalingLists == ScalingLists::Coded);
    }
    if (shape.scalingLists == ScalingLists::Coded) {
        WriteScalingLists(bits);
    }
    bits.Bits(1, 2).Flag(shape.hasPcm);
    if (shape.hasPcm) {
        bits.Bits(0x77, 8).UE(0).UE(1).Flag(true);
    }
}

void WriteReferencePictures(BitWriter& bits, const HevcSpsShape& shape) {
    bits.UE(shape.shortTermSets.size());
    for (size_t i = 0; i < shape.shortTermSets.size(); ++i) {
        WriteShortTermSet(bits, shape.shortTermSets[i], i == 0);
    }
    bits.Flag(shape.longTermPictures > 0);
    if (shape.longTermPictures > 0) {
        bits.UE(shape.longTermPictures);
    }
    for (uint32_t i = 0; i < shape.longTermPictures; ++i) {
        bits.Bits(kFiller, shape.log2MaxPocLsbMinus4 + 4).Flag(true);
    }
}

} // namespace

BitWriter WriteHevcSpsBits(const HevcSpsShape& shape) {
    BitWriter bits;
    bits.Bits(0, 4).Bits(shape.maxSubLayersMinus1, 3).Flag(shape.temporalIdNesting);
    WriteProfileTierLevel(bits, shape);
    bits.UE(0); // sps_seq_parameter_set_id
    WritePictureFormat(bits, shape);
    WriteTools(bits, shape);
    WriteReferencePictures(bits, shape);
    bits.Bits(3, 2).Flag(shape.vui.has_value());
    if (shape.vui) {
        WriteVui(bits, *shape.vui);
    }
    bits.Flag(false); // no extension
    return bits.Flag(true);
}

std::vector<uint8_t> WriteHevcSps(const HevcSpsShape& shape) {
    return WrapHevcSps(WriteHevcSpsBits(shape).Bytes());
}

std::vector<uint8_t> WrapHevcSps(const std::vector<uint8_t>& payload) {
    std::vector<uint8_t> unit{0x42, 0x01};
    unsigned zeros = 0;
    for (const uint8_t byte : payload) {
        if (zeros == 2 && byte <= 3) {
            unit.push_back(3);
            zeros = 0;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        unit.push_back(byte);
    }
    return unit;
}

} // namespace mkv_test
