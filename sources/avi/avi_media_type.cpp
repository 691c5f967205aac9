#include "sources/avi/avi_media_type.h"

#include <cstring>
#include <new>

#include "dshow/media_subtypes.h"
#include "media/format_builder.h"

namespace avi {

namespace {

constexpr DWORD kVideoType = 0x73646976;          // 'vids'
constexpr DWORD kAudioType = 0x73647561;          // 'auds'
constexpr size_t kPcmFormatBytes = 16;            // the oldest form, without cbSize
constexpr DWORD kMaxPictureSeconds = 1000 * 3600; // longer ones are damage

// A format block of that length, all zero.
BYTE* NewFormat(CMediaType& type, size_t length) {
    BYTE* const block = type.AllocFormatBuffer(static_cast<ULONG>(length));
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    std::memset(block, 0, length);
    return block;
}

CMediaType VideoType(const AviStream& stream) {
    BITMAPINFOHEADER bitmap;
    if (stream.format.size() < sizeof(bitmap)) {
        return {};
    }
    std::memcpy(&bitmap, stream.format.data(), sizeof(bitmap));
    CMediaType type(&MEDIATYPE_Video);
    type.subtype = media::SubtypeOf(bitmap);
    type.formattype = FORMAT_VideoInfo;
    type.bTemporalCompression = !media::IsUncompressed(bitmap);
    type.SetVariableSize();
    VIDEOINFOHEADER info{};
    if (stream.rate > 0 && stream.scale / stream.rate <= kMaxPictureSeconds) {
        info.AvgTimePerFrame = kSecond * stream.scale / stream.rate;
    }
    // The picture's header and all that follows it (palette, codec data) end the block.
    constexpr size_t kBitmapOffset = offsetof(VIDEOINFOHEADER, bmiHeader);
    BYTE* const block = NewFormat(type, kBitmapOffset + stream.format.size());
    std::memcpy(block, &info, kBitmapOffset);
    std::memcpy(block + kBitmapOffset, stream.format.data(), stream.format.size());
    return type;
}

CMediaType AudioType(const AviStream& stream) {
    if (stream.format.size() < kPcmFormatBytes) {
        return {};
    }
    const size_t length = std::max(stream.format.size(), sizeof(WAVEFORMATEX));
    CMediaType type(&MEDIATYPE_Audio);
    BYTE* const block = NewFormat(type, length);
    std::memcpy(block, stream.format.data(), stream.format.size());
    WAVEFORMATEX wave;
    std::memcpy(&wave, block, sizeof(wave));
    type.subtype = SubtypeFromWaveTag(wave.wFormatTag);
    type.formattype = FORMAT_WaveFormatEx;
    if (stream.sampleSize > 0) {
        type.SetSampleSize(stream.sampleSize);
    }
    return type;
}

} // namespace

CMediaType MediaTypeOf(const AviStream& stream) {
    switch (stream.type) {
    case kVideoType:
        return VideoType(stream);
    case kAudioType:
        return AudioType(stream);
    default:
        return {};
    }
}

} // namespace avi
