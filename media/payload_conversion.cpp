#include "media/payload_conversion.h"

#include "codecs/annexb_converter.h"
#include "codecs/annexb_units.h"
#include "codecs/av1_units.h"
#include "media/av1_stream.h"
#include "media/codec_table.h"
#include "media/plain_text.h"

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
    return type.majortype == MEDIATYPE_Text || IsAv1(type) || NeedsAnnexBConversion(type);
}

std::vector<BYTE> ConvertStrictPayload(const AM_MEDIA_TYPE& type, ByteView payload) {
    if (type.majortype == MEDIATYPE_Text) {
        return Utf8Of(payload);
    }
    if (IsAv1(type)) {
        return codecs::CleanAv1Units(payload);
    }
    return NeedsAnnexBConversion(type) ? codecs::ConvertAnnexBUnits(payload) : CopyOf(payload);
}

std::optional<std::span<BYTE>> ConvertStrictInPlace(const AM_MEDIA_TYPE& type, std::span<BYTE> payload) {
    if (type.majortype == MEDIATYPE_Text) {
        const ByteView text = WithoutEnd(payload);
        return IsUtf8(text) ? std::optional(payload.first(text.size())) : std::nullopt;
    }
    if (IsAv1(type)) {
        return codecs::CleanAv1UnitsInPlace(payload);
    }
    return NeedsAnnexBConversion(type) ? codecs::ConvertAnnexBUnitsInPlace(payload) : std::optional(payload);
}

} // namespace media
