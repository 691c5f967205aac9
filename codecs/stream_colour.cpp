#include "codecs/stream_colour.h"

#include <algorithm>

#include "codecs/avc_parameter_sets.h"
#include "codecs/big_endian.h"
#include "codecs/hevc_sps.h"
#include "codecs/nal_unit.h"
#include "codecs/sequence_header.h"

namespace codecs {

namespace {

constexpr size_t kMaxFirstUnits = 64;
constexpr uint32_t kLeastBitDepth = 8;
constexpr uint32_t kChroma420 = 1;

void KeepSignal(const VideoSignal& signal, uint32_t chromaFormatIdc, uint32_t bitDepthMinus8, StreamColour& colour) {
    colour.hasParameters = true;
    colour.bitDepth = kLeastBitDepth + bitDepthMinus8;
    colour.signal = signal;
    if (chromaFormatIdc != kChroma420) { // the locations are of no meaning then
        colour.signal.chromaLocation.reset();
    }
}

struct Avc {
    static constexpr size_t kHeaderBytes = kAvcHeaderBytes;

    static bool IsSlice(const NALUnit& unit) {
        return unit.AvcType() >= kAvcNonIdrSlice && unit.AvcType() <= kAvcIdrSlice;
    }
    static bool IsParameterSet(const NALUnit& unit) { return unit.AvcType() == kAvcSpsUnit; }
    static bool IsMessage(const NALUnit& unit) { return unit.AvcType() == kAvcSeiUnit; }
    static void Read(ByteView unit, StreamColour& colour) {
        if (const std::optional<AvcSps> sps = ParseAvcSps(unit)) {
            KeepSignal(sps->signal, sps->chromaFormatIdc, sps->bitDepthLumaMinus8, colour);
        }
    }
};

struct Hevc {
    static constexpr size_t kHeaderBytes = kHevcHeaderBytes;

    static bool IsSlice(const NALUnit& unit) { return unit.HevcType() <= kHevcLastSlice; }
    static bool IsParameterSet(const NALUnit& unit) {
        return unit.HevcType() == kHevcSpsUnit && unit.HevcLayerId() == 0;
    }
    static bool IsMessage(const NALUnit& unit) { return unit.HevcType() == kHevcPrefixSei && unit.HevcLayerId() == 0; }
    static void Read(ByteView unit, StreamColour& colour) {
        if (ParseHevcSpsHead(unit)) {
            const HevcSps sps = ParseHevcSps(unit);
            KeepSignal(sps.signal, sps.chromaFormatIdc, sps.bitDepthLumaMinus8, colour);
        }
    }
};

template <typename Codec>
StreamColour ColourOf(std::span<const ByteView> units) {
    StreamColour colour;
    for (const ByteView unit : units.first(std::min(units.size(), kMaxFirstUnits))) {
        const NALUnit nal(unit);
        if (unit.size() <= Codec::kHeaderBytes || unit.size() > kMaxRecordUnitBytes) {
            continue;
        }
        if (Codec::IsSlice(nal)) {
            break;
        }
        if (Codec::IsParameterSet(nal) && !colour.hasParameters) {
            Codec::Read(unit, colour);
        } else if (Codec::IsMessage(nal)) {
            ReadLightMessages(RawPayload(unit, Codec::kHeaderBytes), colour.light);
        }
    }
    return colour;
}

} // namespace

StreamColour AvcColourOf(std::span<const ByteView> units) {
    return ColourOf<Avc>(units);
}

StreamColour HevcColourOf(std::span<const ByteView> units) {
    return ColourOf<Hevc>(units);
}

std::vector<ByteView> FirstUnitsOf(ByteView sample, size_t lengthBytes) {
    std::vector<ByteView> units;
    while (sample.size() > lengthBytes && units.size() < kMaxFirstUnits) {
        const uint64_t length = ReadBigEndian(sample.first(lengthBytes));
        sample = sample.subspan(lengthBytes);
        units.push_back(sample.first(static_cast<size_t>(std::min<uint64_t>(length, sample.size()))));
        sample = sample.subspan(units.back().size());
    }
    return units;
}

} // namespace codecs
