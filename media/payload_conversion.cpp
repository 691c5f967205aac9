#include "media/payload_conversion.h"

#include "codecs/annexb_converter.h"
#include "media/codec_table.h"

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

} // namespace media
