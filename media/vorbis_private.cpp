#include "media/vorbis_private.h"

namespace media {

std::optional<std::vector<BYTE>> BuildVorbisPrivate(const FormatBlock& block, const VorbisFormat& format) {
    codecs::VorbisHeaders headers;
    size_t offset = sizeof(VorbisFormat);
    for (size_t i = 0; i < headers.size(); ++i) {
        const std::optional<ByteView> header = block.Slice(offset, format.headerSize[i]);
        if (!header) {
            return std::nullopt;
        }
        headers[i] = *header;
        offset += header->size();
    }
    return codecs::LaceVorbisHeaders(headers);
}

} // namespace media
