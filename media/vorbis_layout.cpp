#include "media/vorbis_layout.h"

#include <cstring>

#include "codecs/vorbis_headers.h"
#include "dshow/media_subtypes.h"
#include "media/format_builder.h"
#include "media/wave_layouts.h"

namespace media {

namespace {

// The head of the Vorbis format block; the three header packets follow, back to back.
struct VorbisFormat {
    UINT32 channels;
    UINT32 samplesPerSec;
    UINT32 bitsPerSample;
    UINT32 headerSize[codecs::kVorbisHeaders];
};
static_assert(sizeof(VorbisFormat) == 24);

// None when the block does not hold what its sizes claim.
std::optional<codecs::VorbisHeaders> ReadVorbisHeaders(const FormatBlock& block, const VorbisFormat& format) {
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
    return headers;
}

bool DescribeVorbis(const FormatBlock& block, CodecDescription& description) {
    const auto format = block.Read<VorbisFormat>();
    const auto headers = format ? ReadVorbisHeaders(block, *format) : std::nullopt;
    if (!headers) {
        return false;
    }
    description.audio = AudioDescription{format->samplesPerSec, format->channels, std::nullopt};
    description.codecPrivate = codecs::LaceVorbisHeaders(*headers);
    return true;
}

std::optional<CMediaType> VorbisTypeOf(const CodecRow& row, const TrackFacts& track) {
    const auto headers = codecs::TakeVorbisHeadersApart(track.codecPrivate);
    if (!headers) {
        return {};
    }
    VorbisFormat format{ChannelsOf(track.audio), SamplesPerSecond(track.audio), BitsPerSample(track.audio), {}};
    std::vector<BYTE> block(sizeof(format));
    for (size_t i = 0; i < headers->size(); ++i) {
        const ByteView header = (*headers)[i];
        format.headerSize[i] = static_cast<UINT32>(header.size());
        block.insert(block.end(), header.begin(), header.end());
    }
    std::memcpy(block.data(), &format, sizeof(format));
    return TypeWithFormat(MEDIATYPE_Audio, *row.subtype, mediaformat::kVorbis2, block);
}

} // namespace

constexpr CodecLayout kVorbisLayout{.describe = DescribeVorbis, .typeOf = VorbisTypeOf};

} // namespace media
