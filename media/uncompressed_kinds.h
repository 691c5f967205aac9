// The kinds of pictures that are not compressed: the subtypes that carry them, and what V_UNCOMPRESSED calls each in
// its UncompressedFourCC: names of the letters in the order of memory, and of the bits, as other programs know them.
#pragma once

#include "dshow/media_subtypes.h"
#include "win/platform.h"

namespace media {

struct UncompressedKind {
    GUID subtype;
    DWORD fourCc; // as the file has it; its first letter in the lowest byte
    WORD bits;    // of a pixel, on average
    bool isDib;   // RGB in the system's own form: rows end at multiples of four bytes, and the lowest may come first
};

constexpr UncompressedKind Dib(const GUID& subtype, const GUID& named, WORD bits) {
    return {subtype, named.Data1, bits, true};
}

// A track of it comes back so; most are subtypes of the system's.
constexpr UncompressedKind Named(char a, char b, char c, char d, WORD bits) {
    const GUID subtype = SubtypeFromFourCC(a, b, c, d);
    return {subtype, subtype.Data1, bits, false};
}

// clang-format off
inline constexpr UncompressedKind kUncompressedKinds[] = {
    Dib(mediasubtype::kRgb24,  SubtypeFromFourCC('B', 'G', 'R', 24), 24),
    Dib(mediasubtype::kRgb32,  SubtypeFromFourCC('B', 'G', 'R', 0), 32),
    Dib(mediasubtype::kArgb32, SubtypeFromFourCC('B', 'G', 'R', 'A'), 32),
    Dib(mediasubtype::kRgb555, SubtypeFromFourCC('R', 'G', 'B', 15), 16),
    Dib(mediasubtype::kRgb565, SubtypeFromFourCC('R', 'G', 'B', 16), 16),
    // RGB
    Named('B', 'G', 'R', 24, 24),  Named('B', 'G', 'R', 0, 32),   Named('B', 'G', 'R', 'A', 32),
    Named('R', 'G', 'B', 15, 16),  Named('R', 'G', 'B', 16, 16),
    Named('R', 'G', 'B', 24, 24),  Named('R', 'G', 'B', 0, 32),   Named('R', 'G', 'B', 'A', 32),
    Named('A', 'R', 'G', 'B', 32), Named('A', 'B', 'G', 'R', 32),
    // 4:2:2, 4:4:4 and 4:1:1 in one plane
    Named('Y', 'U', 'Y', '2', 16), Named('U', 'Y', 'V', 'Y', 16), Named('Y', 'V', 'Y', 'U', 16),
    Named('H', 'D', 'Y', 'C', 16), Named('Y', '2', '1', '0', 32), Named('Y', '2', '1', '6', 32),
    Named('A', 'Y', 'U', 'V', 32), Named('Y', '4', '1', '0', 32), Named('Y', '4', '1', '6', 64),
    Named('Y', '4', '1', '1', 12),
    // 4:2:0
    Named('N', 'V', '1', '2', 12), Named('N', 'V', '2', '1', 12), Named('I', '4', '2', '0', 12),
    Named('I', 'Y', 'U', 'V', 12), Named('Y', 'V', '1', '2', 12), Named('P', '0', '1', '0', 24),
    Named('P', '0', '1', '6', 24),
    // 4:2:2, 4:4:4, 4:1:1 and 4:1:0 in planes
    Named('P', '2', '1', '0', 32), Named('P', '2', '1', '6', 32), Named('Y', 'V', '1', '6', 16),
    Named('Y', '4', '2', 'B', 16), Named('Y', 'V', '2', '4', 24), Named('4', '4', '4', 'P', 24),
    Named('Y', '4', '1', 'B', 12), Named('Y', 'V', 'U', '9', 9),
    // Grey
    Named('Y', '8', '0', '0', 8),  Named('G', 'R', 'E', 'Y', 8),
};
// clang-format on

} // namespace media
