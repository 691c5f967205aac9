// The rows that strict files have besides the codec table's: codecs that compatible files hold in another way, or not
// at all. They are tried first.
#pragma once

#include <span>

#include "media/codec_table.h"

namespace media {

[[nodiscard]] std::span<const CodecRow> StrictCodecTable();

// The first row of either table that maps the type; null when there is none.
[[nodiscard]] const CodecRow* FindStrictCodecRow(const AM_MEDIA_TYPE& type);

} // namespace media
