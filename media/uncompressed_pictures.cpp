#include "media/uncompressed_pictures.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <optional>

namespace media {

namespace {

constexpr UINT64 kBitsInByte = 8;
constexpr UINT64 kRowAlignment = 4; // bytes

struct Rows {
    UINT64 bytes = 0;  // of one
    UINT64 stride = 0; // from one to the next
    UINT64 count = 0;
    bool lowestFirst = false;
};

std::optional<BITMAPINFOHEADER> BitmapOf(const AM_MEDIA_TYPE& type) {
    const FormatBlock block(type);
    if (type.formattype == FORMAT_VideoInfo) {
        const auto header = block.Read<VIDEOINFOHEADER>();
        return header ? std::optional(header->bmiHeader) : std::nullopt;
    }
    const auto header = type.formattype == FORMAT_VideoInfo2 ? block.Read<VIDEOINFOHEADER2>() : std::nullopt;
    return header ? std::optional(header->bmiHeader) : std::nullopt;
}

std::optional<Rows> DibRowsOf(const AM_MEDIA_TYPE& type) {
    const UncompressedKind* const kind = FindUncompressedKind(type.subtype);
    const auto bitmap = BitmapOf(type);
    if (kind == nullptr || !kind->isDib || !bitmap || bitmap->biWidth <= 0 || bitmap->biHeight == 0) {
        return std::nullopt;
    }
    Rows rows;
    rows.bytes = static_cast<UINT64>(bitmap->biWidth) * kind->bits / kBitsInByte;
    rows.stride = (rows.bytes + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
    rows.count = static_cast<UINT64>(std::abs(INT64{bitmap->biHeight}));
    rows.lowestFirst = bitmap->biHeight > 0;
    return rows;
}

void TurnOver(const Rows& rows, std::span<BYTE> picture) {
    for (UINT64 upper = 0, lower = rows.count - 1; upper < lower; ++upper, --lower) {
        const auto row = picture.subspan(static_cast<size_t>(upper * rows.stride), static_cast<size_t>(rows.bytes));
        std::swap_ranges(row.begin(), row.end(), picture.begin() + static_cast<ptrdiff_t>(lower * rows.stride));
    }
}

// Each moves towards the front.
void Join(const Rows& rows, std::span<BYTE> picture) {
    for (UINT64 i = 1; i < rows.count; ++i) {
        const auto row = picture.subspan(static_cast<size_t>(i * rows.stride), static_cast<size_t>(rows.bytes));
        std::copy(row.begin(), row.end(), picture.begin() + static_cast<ptrdiff_t>(i * rows.bytes));
    }
}

} // namespace

const UncompressedKind* FindUncompressedKind(const GUID& subtype) {
    const auto found = std::ranges::find(kUncompressedKinds, subtype, &UncompressedKind::subtype);
    return found == std::end(kUncompressedKinds) ? nullptr : found;
}

DWORD PictureBytes(const UncompressedKind& kind, LONG width, LONG height) {
    if (width <= 0 || height <= 0) {
        return 0;
    }
    const UINT64 pixels = static_cast<UINT64>(width) * static_cast<UINT64>(height);
    return static_cast<DWORD>(std::min<UINT64>(pixels * kind.bits / kBitsInByte, UINT32_MAX));
}

bool HasOtherRows(const AM_MEDIA_TYPE& type) {
    const auto rows = DibRowsOf(type);
    return rows && (rows->lowestFirst || rows->bytes != rows->stride);
}

std::span<BYTE> PutRowsInOrder(const AM_MEDIA_TYPE& type, std::span<BYTE> picture) {
    std::optional<Rows> rows = DibRowsOf(type);
    if (rows && picture.size() == rows->bytes * rows->count) {
        rows->stride = rows->bytes; // whoever made it left out what fills the rows
    }
    if (!rows || picture.size() != rows->stride * rows->count) {
        return picture;
    }
    if (rows->lowestFirst) {
        TurnOver(*rows, picture);
    }
    if (rows->bytes != rows->stride) {
        Join(*rows, picture);
    }
    return picture.first(static_cast<size_t>(rows->bytes * rows->count));
}

} // namespace media
