// Which media types the muxer's inputs take.
#pragma once

#include "win/platform.h"

namespace media {

// Whether an input pin accepts the type. For some video subtypes acceptance looks at the subtype alone, while the
// codec mapping also looks at the format block: such a type may still be refused when streaming starts.
[[nodiscard]] bool IsAcceptedInputType(const AM_MEDIA_TYPE& type);

// The same of an input whose file is to be strict, which takes more.
[[nodiscard]] bool IsAcceptedStrictInputType(const AM_MEDIA_TYPE& type);

} // namespace media
