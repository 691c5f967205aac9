// What a sample's bytes become before they are written as a block. H.264 and H.265 byte streams (start codes) are
// rewritten with 4-byte lengths; every other payload is kept as it came. Strict files convert some more.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "media/format_block.h"
#include "win/platform.h"

namespace media {

// Whether samples of this type carry start codes that Matroska does not want.
[[nodiscard]] bool NeedsAnnexBConversion(const AM_MEDIA_TYPE& type);

// A copy of the payload, converted where the type needs it. Empty when nothing is left to be written.
[[nodiscard]] std::vector<BYTE> ConvertPayload(const AM_MEDIA_TYPE& type, ByteView payload);

// The same in place, for a type that needs it: what is left of the payload. None when that needs more room than there
// is; the payload is as it was then.
[[nodiscard]] std::optional<std::span<BYTE>> ConvertAnnexBInPlace(std::span<BYTE> payload);

// ---- Strict files ------------------------------------------------------------------------------------------------

// Whether samples of this type become others (media/strict_payloads.h).
[[nodiscard]] bool NeedsStrictConversion(const AM_MEDIA_TYPE& type);

// A copy of the payload, converted where the type needs it. Units begin behind start codes of either length, and zeros
// behind them are left out; of AV1 stays what says something in a container; plain text becomes UTF-8; RGB has its
// uppermost row first, and no bytes between the rows.
[[nodiscard]] std::vector<BYTE> ConvertStrictPayload(const AM_MEDIA_TYPE& type, ByteView payload);

// What stands beside the block of such a sample, in an addition of identifier 1: the settings and the like of a WebVTT
// cue. Empty: nothing.
[[nodiscard]] std::vector<BYTE> StrictAdditionOf(const AM_MEDIA_TYPE& type, ByteView payload);

// The conversion in place, for any type: what is left of the payload. None when that needs more room than there is; the
// payload is as it was then.
[[nodiscard]] std::optional<std::span<BYTE>> ConvertStrictInPlace(const AM_MEDIA_TYPE& type, std::span<BYTE> payload);

} // namespace media
