// What the end of an Opus packet holds beyond its stream: a stop time in front of the packet's own end says so.
// Units: nanoseconds, reference times. Exact to the sample, both ways.
#pragma once

#include "media/format_block.h"
#include "win/platform.h"

namespace media {

[[nodiscard]] bool IsOpus(const AM_MEDIA_TYPE& type);

// How long its decoded samples last, without so much at their end; 0 for what is no packet.
[[nodiscard]] REFERENCE_TIME OpusLengthWithout(ByteView packet, UINT64 paddingNs);

// What is behind the stop time of a packet that lasts so long; 0 when nothing is. A packet that lasts 0 or less has no
// stop time.
[[nodiscard]] UINT64 OpusPaddingNs(ByteView packet, REFERENCE_TIME length);

} // namespace media
