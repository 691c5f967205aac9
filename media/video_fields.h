// What all pictures have in common: between the heads of the video format blocks and the fields of a track.
#pragma once

#include "media/codec_description.h"
#include "media/format_builder.h"
#include "media/track_facts.h"

namespace media {

// Default duration and size in pixels, without a display size. Signed values are written as they are stored: a negative
// one turns into its two's complement.
void DescribePixels(REFERENCE_TIME frameDuration, const BITMAPINFOHEADER& bitmap, CodecDescription& description);

// With a display size: the pixels' own, or deliberately the aspect ratio itself, which players have always been given
// in place of a size in pixels.
void DescribePicture(const VIDEOINFOHEADER& header, CodecDescription& description);
void DescribePicture(const VIDEOINFOHEADER2& header, CodecDescription& description);

// The display size itself stands for the picture's shape, so that it is written back unchanged.
[[nodiscard]] Picture PictureOf(const TrackFacts& track);

} // namespace media
