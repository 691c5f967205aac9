// Pictures that are not compressed, and their rows.
#pragma once

#include <span>

#include "media/format_block.h"
#include "media/uncompressed_kinds.h"
#include "win/platform.h"

namespace media {

// Null for every other subtype.
[[nodiscard]] const UncompressedKind* FindUncompressedKind(const GUID& subtype);

// Bytes of such a picture; 0 for a size that is none.
[[nodiscard]] DWORD PictureBytes(const UncompressedKind& kind, LONG width, LONG height);

// ---- Rows: files have the uppermost first, one right behind the other --------------------------------------------

// Whether samples of the type have them in another way.
[[nodiscard]] bool HasOtherRows(const AM_MEDIA_TYPE& type);

// In place, for such a type: what is left of the picture. One that is not as large as the type says stays as it is.
[[nodiscard]] std::span<BYTE> PutRowsInOrder(const AM_MEDIA_TYPE& type, std::span<BYTE> picture);

} // namespace media
