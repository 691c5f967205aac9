// Media types by value, where the toolchain's headers lack them or only declare them. Constants rather than
// linked identifiers, so that tables of them can be built at compile time.
#pragma once

#include "win/platform.h"

// {XXXXXXXX-0000-0010-8000-00AA00389B71}, the form that FourCCs and wave format tags take as a subtype.
constexpr GUID SubtypeFromFourCC(DWORD fourcc) {
    return {fourcc, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
}

constexpr GUID SubtypeFromFourCC(char a, char b, char c, char d) {
    const auto letter = [](char value) { return static_cast<DWORD>(static_cast<unsigned char>(value)); };
    return SubtypeFromFourCC(letter(a) | letter(b) << 8 | letter(c) << 16 | letter(d) << 24);
}

constexpr GUID SubtypeFromWaveTag(WORD tag) {
    return SubtypeFromFourCC(static_cast<DWORD>(tag));
}

namespace mediatype {

inline constexpr GUID kSubtitle{0xe487eb08, 0x6b26, 0x4be9, {0x9d, 0xd3, 0x99, 0x34, 0x34, 0xd3, 0x13, 0xfd}};

} // namespace mediatype

namespace mediasubtype {

// Video
inline constexpr GUID kAvc1 = SubtypeFromFourCC('A', 'V', 'C', '1');
// H.264 as an Annex B byte stream, the alternative to 'AVC1'.
inline constexpr GUID kH264AnnexB{0x8d2d71cb, 0x243f, 0x45e3, {0xb2, 0xd8, 0x5f, 0xd7, 0x96, 0x7e, 0xc0, 0x9b}};
inline constexpr GUID kMp4v = SubtypeFromFourCC('M', 'P', '4', 'V');
inline constexpr GUID kHvc1 = SubtypeFromFourCC('H', 'V', 'C', '1');
// H.265 as an Annex B byte stream.
inline constexpr GUID kHevcAnnexB = SubtypeFromFourCC('H', 'E', 'V', 'C');
inline constexpr GUID kTheora = SubtypeFromFourCC('T', 'H', 'E', 'O');
inline constexpr GUID kVp8 = SubtypeFromFourCC('V', 'P', '8', '0');
inline constexpr GUID kVp9 = SubtypeFromFourCC('V', 'P', '9', '0');
inline constexpr GUID kAv01 = SubtypeFromFourCC('A', 'V', '0', '1');
inline constexpr GUID kFfv1 = SubtypeFromFourCC('F', 'F', 'V', '1');
// The system's uncompressed RGB.
inline constexpr GUID kRgb565{0xe436eb7b, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
inline constexpr GUID kRgb555{0xe436eb7c, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
inline constexpr GUID kRgb24{0xe436eb7d, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
inline constexpr GUID kRgb32{0xe436eb7e, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};
inline constexpr GUID kArgb32{0x773c9ac0, 0x3274, 0x11d0, {0xb7, 0x24, 0x00, 0xaa, 0x00, 0x6c, 0x1a, 0x01}};

// Audio
inline constexpr GUID kPcm = SubtypeFromWaveTag(0x0001);
inline constexpr GUID kIeeeFloat = SubtypeFromWaveTag(0x0003);
inline constexpr GUID kMuLaw = SubtypeFromWaveTag(0x0007);
inline constexpr GUID kMpeg1Audio = SubtypeFromWaveTag(0x0050);
inline constexpr GUID kMp3 = SubtypeFromWaveTag(0x0055);
inline constexpr GUID kRawAac = SubtypeFromWaveTag(0x00ff);
inline constexpr GUID kAc3WaveTag = SubtypeFromWaveTag(0x2000);
inline constexpr GUID kDtsWaveTag = SubtypeFromWaveTag(0x2001);
inline constexpr GUID kWavPack4 = SubtypeFromWaveTag(0x5756);
inline constexpr GUID kTta1 = SubtypeFromWaveTag(0x77a1);
inline constexpr GUID kAlacWaveTag = SubtypeFromWaveTag(0x6c61);
inline constexpr GUID kAlac = SubtypeFromFourCC('a', 'l', 'a', 'c');
// Big-endian PCM, as QuickTime names it.
inline constexpr GUID kTwos = SubtypeFromFourCC('t', 'w', 'o', 's');
inline constexpr GUID kIn24 = SubtypeFromFourCC('i', 'n', '2', '4');
inline constexpr GUID kIn32 = SubtypeFromFourCC('i', 'n', '3', '2');
inline constexpr GUID kOpus = SubtypeFromFourCC('O', 'P', 'U', 'S');
inline constexpr GUID kDolbyAc3{0xe06d802c, 0xdb46, 0x11cf, {0xb4, 0xd1, 0x00, 0x80, 0x5f, 0x6c, 0xbb, 0xea}};
inline constexpr GUID kDts{0xe06d8033, 0xdb46, 0x11cf, {0xb4, 0xd1, 0x00, 0x80, 0x5f, 0x6c, 0xbb, 0xea}};
inline constexpr GUID kDolbyDdPlus{0xa7fb87af, 0x2d02, 0x42fb, {0xa4, 0xd4, 0x05, 0xcd, 0x93, 0x84, 0x3b, 0xdd}};
inline constexpr GUID kDolbyTrueHd{0xeb27cec4, 0x163e, 0x4ca3, {0x8b, 0x74, 0x8e, 0x25, 0xf9, 0x1b, 0x51, 0x7e}};
inline constexpr GUID kVorbis{0x8d2fd10b, 0x5841, 0x4a6b, {0x89, 0x05, 0x58, 0x8f, 0xec, 0x1a, 0xde, 0xd9}};
inline constexpr GUID kFlacFramed{0x1541c5c0, 0xcddf, 0x477d, {0xbc, 0x0a, 0x86, 0xf8, 0xae, 0x7f, 0x83, 0x54}};

// Subtitles
inline constexpr GUID kUtf8{0x87c0b230, 0x03a8, 0x4fdf, {0x80, 0x10, 0xb2, 0x7a, 0x58, 0x48, 0x20, 0x0d}};
inline constexpr GUID kSsa{0x3020560f, 0x255a, 0x4ddc, {0x80, 0x6e, 0x6c, 0x5c, 0xc6, 0xdc, 0xd7, 0x0a}};
inline constexpr GUID kAss{0x326444f7, 0x686f, 0x47ff, {0xa4, 0xb2, 0xc8, 0xc9, 0x63, 0x07, 0xb4, 0xc2}};
inline constexpr GUID kUsf{0xb753b29a, 0x0a96, 0x45be, {0x98, 0x5f, 0x68, 0x35, 0x1d, 0x9c, 0xab, 0x90}};
// Samples are the text of a cue, or boxes with all that belongs to it (ISO/IEC 14496-30).
inline constexpr GUID kWebVtt{0xc886d215, 0xf485, 0x40bb, {0x8d, 0xb6, 0xfa, 0xdb, 0xc6, 0x19, 0xa4, 0x5d}};
inline constexpr GUID kWebVttBoxes = SubtypeFromFourCC('w', 'v', 't', 't');
inline constexpr GUID kDvbSubtitle{0x34ffcbc3, 0xd5b3, 0x4171, {0x90, 0x02, 0xd4, 0xc6, 0x03, 0x01, 0x69, 0x7f}};
inline constexpr GUID kVobSub{0xf7239e31, 0x9599, 0x4e43, {0x8d, 0xd5, 0xfb, 0xaf, 0x75, 0xcf, 0x37, 0xf1}};

} // namespace mediasubtype

namespace mediaformat {

inline constexpr GUID kSubtitleInfo{0xa33d2f7d, 0x96bc, 0x4337, {0xb2, 0x3b, 0xa8, 0xb9, 0xfb, 0xc2, 0x95, 0xe9}};
// The Vorbis block: channels, rate, bits, the sizes of three header packets, and these.
inline constexpr GUID kVorbis2{0xb36e107f, 0xa938, 0x4387, {0x93, 0xc7, 0x55, 0xe9, 0x66, 0x75, 0x74, 0x73}};

} // namespace mediaformat
