// Layouts of FORMAT_VideoInfo and FORMAT_VideoInfo2 for strict files, which take size, shape and duration of a picture
// from the head of the block.
#pragma once

#include "media/codec_table.h"

namespace media {

extern const CodecLayout kPictureLayout; // nothing but the picture; no track comes back
// The bytes that follow the structure are the private data. Tracks come back with the larger structure alone.
extern const CodecLayout kExtraPictureLayout;
extern const CodecLayout kExtraPicture2Layout;
// The private data is the FourCC that is the subtype.
extern const CodecLayout kProResLayout;
// The track's UncompressedFourCC is the subtype.
extern const CodecLayout kUncompressedLayout;

} // namespace media
