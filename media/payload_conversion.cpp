#include "media/payload_conversion.h"

#include "codecs/annexb_converter.h"
#include "codecs/webvtt_cue.h"
#include "dshow/media_subtypes.h"
#include "media/codec_table.h"
#include "media/strict_payloads.h"

namespace media {

// Asked for every packet: most streams need no look into the table.
bool NeedsAnnexBConversion(const AM_MEDIA_TYPE& type) {
    if (type.majortype != MEDIATYPE_Video || type.formattype != FORMAT_MPEG2Video) {
        return false;
    }
    const CodecRow* const row = FindCodecRow(type);
    return row != nullptr && row->layout->hasStartCodes;
}

std::vector<BYTE> ConvertPayload(const AM_MEDIA_TYPE& type, ByteView payload) {
    if (NeedsAnnexBConversion(type)) {
        return codecs::ConvertAnnexB(payload, codecs::kStartCodeLengthBytes, codecs::kSampleLengthSizeBytes);
    }
    return {payload.begin(), payload.end()};
}

std::optional<std::span<BYTE>> ConvertAnnexBInPlace(std::span<BYTE> payload) {
    return codecs::ReplaceStartCodes(payload);
}

bool NeedsStrictConversion(const AM_MEDIA_TYPE& type) {
    return FindStrictPayload(type) != nullptr;
}

std::vector<BYTE> ConvertStrictPayload(const AM_MEDIA_TYPE& type, ByteView payload) {
    const StrictPayload* const found = FindStrictPayload(type);
    return found == nullptr ? CopyOf(payload) : found->copy(type, payload);
}

std::vector<BYTE> StrictAdditionOf(const AM_MEDIA_TYPE& type, ByteView payload) {
    if (type.majortype != mediatype::kSubtitle || type.subtype != mediasubtype::kWebVttBoxes) {
        return {};
    }
    const std::string addition = codecs::CueAddition(codecs::CueOfBoxes(payload));
    return {addition.begin(), addition.end()};
}

std::optional<std::span<BYTE>> ConvertStrictInPlace(const AM_MEDIA_TYPE& type, std::span<BYTE> payload) {
    const StrictPayload* const found = FindStrictPayload(type);
    return found == nullptr ? std::optional(payload) : found->inPlace(type, payload);
}

} // namespace media
