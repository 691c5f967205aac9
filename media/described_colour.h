// The colours of a strict description: what the control flags of the format block tell, and what of the rest the
// codec's headers and the first picture do. The flags count first, since whoever makes the type may know better than
// the stream, but where they are coarser than what the stream tells, that is it.
#pragma once

#include "media/codec_description.h"
#include "media/format_block.h"

namespace media {

// What type and headers tell, and whether the first picture may tell more; the description has its codec and its
// private data.
void DescribeColour(const AM_MEDIA_TYPE& type, CodecDescription& description);

// With what a picture tells at which the stream begins; the frame as a strict file has it.
[[nodiscard]] Colour ColourWithFirstFrame(const AM_MEDIA_TYPE& type, ByteView frame);

} // namespace media
