#include "codecs/vorbis_headers.h"

#include <algorithm>

#include "codecs/lacing.h"

namespace codecs {

std::vector<uint8_t> LaceVorbisHeaders(const VorbisHeaders& headers) {
    return LaceXiph(headers);
}

std::optional<VorbisHeaders> TakeVorbisHeadersApart(ByteView codecPrivate) {
    const std::optional<std::vector<ByteView>> packets = TakeFramesApart(codecPrivate, kXiphLacing);
    if (!packets || packets->size() != kVorbisHeaders) {
        return {};
    }
    VorbisHeaders headers;
    std::copy(packets->begin(), packets->end(), headers.begin());
    return headers;
}

} // namespace codecs
