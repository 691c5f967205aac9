#include "media/input_types.h"

#include <algorithm>
#include <span>

#include "media/codec_table.h"
#include "media/strict_codec_table.h"

namespace media {

namespace {

bool IsAcceptedBy(std::span<const CodecRow> rows, const AM_MEDIA_TYPE& type) {
    return std::ranges::any_of(rows, [&type](const CodecRow& row) { return row.Accepts(type); });
}

} // namespace

bool IsAcceptedInputType(const AM_MEDIA_TYPE& type) {
    return IsAcceptedBy(CodecTable(), type);
}

bool IsAcceptedStrictInputType(const AM_MEDIA_TYPE& type) {
    return IsAcceptedBy(StrictCodecTable(), type) || IsAcceptedInputType(type);
}

} // namespace media
