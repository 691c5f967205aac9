#include "media/format_builder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <vector>

#include "dshow/media_subtypes.h"

namespace media {

namespace {

// The toolchain's headers lack it.
struct SubtitleInfo {
    DWORD offset;         // bytes from the block's start to the codec's header
    char isoLanguage[4];  // ISO 639-2 code, zero-terminated
    WCHAR trackName[256]; // zero-terminated
};
static_assert(sizeof(SubtitleInfo) == 520);

constexpr WORD kPictureBits = 24;
constexpr size_t kPcmWaveFormatBytes = 16; // the oldest form, without cbSize

// The structure's first bytes, then the others.
template <typename Structure>
std::vector<BYTE> Block(const Structure& structure, size_t structureBytes, ByteView extra) {
    std::vector<BYTE> block(structureBytes + extra.size());
    std::memcpy(block.data(), &structure, structureBytes);
    std::copy(extra.begin(), extra.end(), block.begin() + static_cast<std::ptrdiff_t>(structureBytes));
    return block;
}

VIDEOINFOHEADER InfoOf(const Picture& picture, const BITMAPINFOHEADER& bitmap) {
    VIDEOINFOHEADER info{};
    info.AvgTimePerFrame = picture.frameDuration;
    info.bmiHeader = bitmap;
    return info;
}

VIDEOINFOHEADER2 Info2Of(const Picture& picture, const BITMAPINFOHEADER& bitmap) {
    VIDEOINFOHEADER2 info{};
    info.AvgTimePerFrame = picture.frameDuration;
    info.dwInterlaceFlags = picture.interlaceFlags;
    info.dwControlFlags = picture.controlFlags;
    info.dwPictAspectRatioX = picture.aspectX;
    info.dwPictAspectRatioY = picture.aspectY;
    info.bmiHeader = bitmap;
    return info;
}

constexpr DWORD kFirstFourCC = 0x100; // smaller values of biCompression are the system's own

GUID UncompressedSubtype(WORD bitsPerPixel) {
    switch (bitsPerPixel) {
    case 8:
        return MEDIASUBTYPE_RGB8;
    case 16:
        return MEDIASUBTYPE_RGB555;
    case 32:
        return MEDIASUBTYPE_RGB32;
    default:
        return MEDIASUBTYPE_RGB24;
    }
}

} // namespace

CMediaType TypeWithFormat(const GUID& major, const GUID& subtype, const GUID& format, ByteView block) {
    CMediaType type(&major);
    type.subtype = subtype;
    type.formattype = format;
    type.SetVariableSize();
    if (!block.empty() && type.SetFormat(block.data(), static_cast<ULONG>(block.size())) == FALSE) {
        throw std::bad_alloc();
    }
    return type;
}

BITMAPINFOHEADER BitmapHeader(const Picture& picture, DWORD compression) {
    BITMAPINFOHEADER bitmap{};
    bitmap.biSize = sizeof(bitmap);
    bitmap.biWidth = picture.width;
    bitmap.biHeight = picture.height;
    bitmap.biPlanes = 1;
    bitmap.biBitCount = kPictureBits;
    bitmap.biCompression = compression;
    return bitmap;
}

bool IsUncompressed(const BITMAPINFOHEADER& bitmap) {
    return bitmap.biCompression < kFirstFourCC;
}

GUID SubtypeOf(const BITMAPINFOHEADER& bitmap) {
    return IsUncompressed(bitmap) ? UncompressedSubtype(bitmap.biBitCount) : SubtypeFromFourCC(bitmap.biCompression);
}

CMediaType VideoInfoType(const GUID& subtype, const Picture& picture, const BITMAPINFOHEADER& bitmap, ByteView extra) {
    const VIDEOINFOHEADER info = InfoOf(picture, bitmap);
    CMediaType type = TypeWithFormat(MEDIATYPE_Video, subtype, FORMAT_VideoInfo, Block(info, sizeof(info), extra));
    type.SetTemporalCompression(TRUE);
    return type;
}

CMediaType VideoInfo2Type(const GUID& subtype, const Picture& picture, const BITMAPINFOHEADER& bitmap, ByteView extra) {
    const VIDEOINFOHEADER2 info = Info2Of(picture, bitmap);
    CMediaType type = TypeWithFormat(MEDIATYPE_Video, subtype, FORMAT_VideoInfo2, Block(info, sizeof(info), extra));
    type.SetTemporalCompression(TRUE);
    return type;
}

CMediaType Mpeg1VideoType(const Picture& picture, ByteView sequenceHeader) {
    MPEG1VIDEOINFO info{};
    info.hdr = InfoOf(picture, BitmapHeader(picture, 0));
    info.cbSequenceHeader = static_cast<DWORD>(sequenceHeader.size());
    std::vector<BYTE> block = Block(info, offsetof(MPEG1VIDEOINFO, bSequenceHeader), sequenceHeader);
    block.resize(std::max(block.size(), sizeof(info)));
    CMediaType type = TypeWithFormat(MEDIATYPE_Video, MEDIASUBTYPE_MPEG1Payload, FORMAT_MPEGVideo, block);
    type.SetTemporalCompression(TRUE);
    return type;
}

CMediaType Mpeg2VideoType(const GUID& subtype, const Picture& picture, ByteView sequenceHeader,
                          const Mpeg2Details& details) {
    MPEG2VIDEOINFO info{};
    info.hdr = Info2Of(picture, BitmapHeader(picture, subtype.Data1));
    info.cbSequenceHeader = static_cast<DWORD>(sequenceHeader.size());
    info.dwProfile = details.profile;
    info.dwLevel = details.level;
    info.dwFlags = details.flags;
    std::vector<BYTE> block = Block(info, offsetof(MPEG2VIDEOINFO, dwSequenceHeader), sequenceHeader);
    block.resize(std::max(block.size(), sizeof(info)));
    CMediaType type = TypeWithFormat(MEDIATYPE_Video, subtype, FORMAT_MPEG2Video, block);
    type.SetTemporalCompression(TRUE);
    return type;
}

CMediaType WaveType(const GUID& subtype, WAVEFORMATEX wave, ByteView extra) {
    wave.cbSize = static_cast<WORD>(std::min<size_t>(extra.size(), UINT16_MAX));
    return TypeWithFormat(MEDIATYPE_Audio, subtype, FORMAT_WaveFormatEx, Block(wave, sizeof(wave), extra));
}

std::optional<CMediaType> WholeWaveType(ByteView format) {
    std::vector<BYTE> block = CopyOf(format);
    if (block.size() < kPcmWaveFormatBytes) {
        return {};
    }
    block.resize(std::max(block.size(), sizeof(WAVEFORMATEX)));
    WORD tag = 0;
    std::memcpy(&tag, block.data(), sizeof(tag));
    return TypeWithFormat(MEDIATYPE_Audio, SubtypeFromWaveTag(tag), FORMAT_WaveFormatEx, block);
}

CMediaType SubtitleType(const GUID& subtype, const char* language, ByteView header) {
    SubtitleInfo info{};
    info.offset = sizeof(info);
    std::strncpy(info.isoLanguage, language, sizeof(info.isoLanguage) - 1);
    return TypeWithFormat(mediatype::kSubtitle, subtype, mediaformat::kSubtitleInfo, Block(info, sizeof(info), header));
}

} // namespace media
