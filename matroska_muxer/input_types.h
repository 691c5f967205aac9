// Which media types the muxer's inputs take, and what kind of stream each is.
#pragma once

#include "mux/mux_stream_kind.h"
#include "win/platform.h"

// Whether an input pin accepts the type. For some video subtypes acceptance looks at the subtype alone, while the
// codec mapping also looks at the format block: such a type may still be refused when streaming starts.
[[nodiscard]] bool IsAcceptedInputType(const AM_MEDIA_TYPE& type);

[[nodiscard]] MuxStreamKind StreamKindOf(const AM_MEDIA_TYPE& type);

// Text and subtitle packets are written as block groups with a duration.
[[nodiscard]] bool IsTextOrSubtitle(const AM_MEDIA_TYPE& type);
