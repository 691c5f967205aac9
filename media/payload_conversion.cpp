#include "media/payload_conversion.h"

#include "codecs/annexb_converter.h"
#include "dshow/media_subtypes.h"

namespace media {

bool NeedsAnnexBConversion(const AM_MEDIA_TYPE& type) {
    return type.majortype == MEDIATYPE_Video && type.formattype == FORMAT_MPEG2Video &&
           (type.subtype == mediasubtype::kH264AnnexB || type.subtype == mediasubtype::kHevcAnnexB);
}

std::vector<BYTE> ConvertPayload(const AM_MEDIA_TYPE& type, std::span<const BYTE> payload) {
    if (NeedsAnnexBConversion(type)) {
        return codecs::ConvertAnnexB(payload, codecs::kStartCodeLengthBytes, codecs::kSampleLengthSizeBytes);
    }
    return {payload.begin(), payload.end()};
}

} // namespace media
