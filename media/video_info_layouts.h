// Layouts of FORMAT_VideoInfo and FORMAT_VideoInfo2, whose structures other bytes may follow.
#pragma once

#include "media/codec_table.h"

namespace media {

extern const CodecLayout kVp8Layout; // nothing but the picture
extern const CodecLayout kVp9Layout; // the bytes that follow VIDEOINFOHEADER2 are the private data
// The private data is a BITMAPINFOHEADER and what belongs to it. The plain block loses the latter.
extern const CodecLayout kVfwLayout;
extern const CodecLayout kVfw2Layout;

} // namespace media
