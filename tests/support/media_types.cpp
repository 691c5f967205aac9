#include "tests/support/media_types.h"

#include <cstddef>
#include <cstring>

namespace test_support {

namespace {

// The format type that Vorbis decoders publish for their block.
constexpr GUID kFormatVorbis{0xb36e107f, 0xa938, 0x4387, {0x93, 0xc7, 0x55, 0xe9, 0x66, 0x75, 0x74, 0x73}};

// The format block of the Vorbis subtype, in front of the three headers.
struct VorbisBlock {
    DWORD channels;
    DWORD samplesPerSecond;
    DWORD bitsPerSample;
    DWORD headerBytes[3];
};

Bytes Join(const void* structure, size_t structureBytes, const Bytes& extra) {
    const BYTE* const first = static_cast<const BYTE*>(structure);
    Bytes block(first, first + structureBytes);
    block.insert(block.end(), extra.begin(), extra.end());
    return block;
}

BITMAPINFOHEADER BitmapHeader(const GUID& subtype, const VideoShape& shape, size_t extraBytes) {
    BITMAPINFOHEADER header{};
    header.biSize = static_cast<DWORD>(sizeof(header) + extraBytes);
    header.biWidth = shape.width;
    header.biHeight = shape.height;
    header.biPlanes = 1;
    header.biBitCount = 24;
    header.biCompression = subtype.Data1; // the FourCC of subtypes that have one
    return header;
}

VIDEOINFOHEADER VideoInfo(const GUID& subtype, const VideoShape& shape, size_t extraBytes) {
    VIDEOINFOHEADER info{};
    info.AvgTimePerFrame = shape.averageTimePerFrame;
    info.bmiHeader = BitmapHeader(subtype, shape, extraBytes);
    return info;
}

VIDEOINFOHEADER2 VideoInfo2(const GUID& subtype, const VideoShape& shape, size_t extraBytes) {
    VIDEOINFOHEADER2 info{};
    info.AvgTimePerFrame = shape.averageTimePerFrame;
    info.dwPictAspectRatioX = shape.aspectX;
    info.dwPictAspectRatioY = shape.aspectY;
    info.bmiHeader = BitmapHeader(subtype, shape, extraBytes);
    return info;
}

} // namespace

MediaTypeValue VideoInfoType(const GUID& subtype, const VideoShape& shape, const Bytes& extra) {
    const VIDEOINFOHEADER info = VideoInfo(subtype, shape, extra.size());
    return {MEDIATYPE_Video, subtype, FORMAT_VideoInfo, Join(&info, sizeof(info), extra)};
}

MediaTypeValue VideoInfo2Type(const GUID& subtype, const VideoShape& shape, const Bytes& extra) {
    const VIDEOINFOHEADER2 info = VideoInfo2(subtype, shape, extra.size());
    return {MEDIATYPE_Video, subtype, FORMAT_VideoInfo2, Join(&info, sizeof(info), extra)};
}

MediaTypeValue Mpeg1VideoType(const VideoShape& shape, const Bytes& sequenceHeader) {
    MPEG1VIDEOINFO info{};
    info.hdr = VideoInfo(MEDIASUBTYPE_MPEG1Payload, shape, 0);
    info.cbSequenceHeader = static_cast<DWORD>(sequenceHeader.size());
    const Bytes block = Join(&info, offsetof(MPEG1VIDEOINFO, bSequenceHeader), sequenceHeader);
    return {MEDIATYPE_Video, MEDIASUBTYPE_MPEG1Payload, FORMAT_MPEGVideo, block};
}

MediaTypeValue Mpeg2VideoType(const GUID& subtype, const VideoShape& shape, const Bytes& sequenceHeader, DWORD profile,
                              DWORD level, DWORD lengthFieldBytes) {
    MPEG2VIDEOINFO info{};
    info.hdr = VideoInfo2(subtype, shape, 0);
    info.cbSequenceHeader = static_cast<DWORD>(sequenceHeader.size());
    info.dwProfile = profile;
    info.dwLevel = level;
    info.dwFlags = lengthFieldBytes;
    const Bytes block = Join(&info, offsetof(MPEG2VIDEOINFO, dwSequenceHeader), sequenceHeader);
    return {MEDIATYPE_Video, subtype, FORMAT_MPEG2Video, block};
}

MediaTypeValue WaveType(const GUID& subtype, const AudioShape& shape, const Bytes& extra) {
    WAVEFORMATEX wave{};
    wave.wFormatTag = static_cast<WORD>(subtype.Data1);
    wave.nChannels = shape.channels;
    wave.nSamplesPerSec = shape.samplesPerSecond;
    wave.nAvgBytesPerSec = shape.averageBytesPerSecond;
    wave.nBlockAlign = static_cast<WORD>(shape.channels * shape.bitsPerSample / 8);
    wave.wBitsPerSample = shape.bitsPerSample;
    wave.cbSize = static_cast<WORD>(extra.size());
    return {MEDIATYPE_Audio, subtype, FORMAT_WaveFormatEx, Join(&wave, sizeof(wave), extra)};
}

MediaTypeValue VorbisType(const AudioShape& shape, const std::array<Bytes, 3>& headers) {
    VorbisBlock block{shape.channels, shape.samplesPerSecond, shape.bitsPerSample, {}};
    Bytes all;
    for (size_t i = 0; i < headers.size(); ++i) {
        block.headerBytes[i] = static_cast<DWORD>(headers[i].size());
        all.insert(all.end(), headers[i].begin(), headers[i].end());
    }
    return {MEDIATYPE_Audio, mediasubtype::kVorbis, kFormatVorbis, Join(&block, sizeof(block), all)};
}

MediaTypeValue TextType() {
    return {MEDIATYPE_Text, GUID_NULL, GUID_NULL};
}

MediaTypeValue SubtitleType(const GUID& subtype, const Bytes& header) {
    SubtitleInfo info{};
    info.offset = sizeof(info);
    std::memcpy(info.isoLanguage, "eng", sizeof("eng"));
    return {mediatype::kSubtitle, subtype, mediaformat::kSubtitleInfo, Join(&info, sizeof(info), header)};
}

} // namespace test_support
