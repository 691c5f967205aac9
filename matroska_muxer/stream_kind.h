// What kind of stream the mux core takes a media type for.
#pragma once

#include "mux/mux_stream_kind.h"
#include "win/platform.h"

// By the major type alone.
[[nodiscard]] MuxStreamKind StreamKindOf(const AM_MEDIA_TYPE& type);
