#include "media/input_types.h"

#include <algorithm>

#include "media/codec_table.h"

namespace media {

bool IsAcceptedInputType(const AM_MEDIA_TYPE& type) {
    return std::ranges::any_of(CodecTable(), [&type](const CodecRow& row) { return row.Accepts(type); });
}

} // namespace media
