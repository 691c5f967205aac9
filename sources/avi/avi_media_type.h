// From the format of an AVI stream to a DirectShow media type.
#pragma once

#include "dshow/media_type.h"
#include "sources/avi/avi_file.h"

namespace avi {

// A type without a major type for a stream that is neither video nor audio, or whose format is cut off.
[[nodiscard]] CMediaType MediaTypeOf(const AviStream& stream);

} // namespace avi
