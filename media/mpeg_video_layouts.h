// Layouts of the MPEG format blocks, which end with a sequence header.
#pragma once

#include "media/codec_table.h"

namespace media {

extern const CodecLayout kMpeg1Layout; // FORMAT_MPEGVideo

// FORMAT_MPEG2Video, by what becomes of the sequence header.
extern const CodecLayout kMpeg2Layout;          // it is the private data
extern const CodecLayout kAvcLengthsLayout;     // H.264 parameter sets with lengths
extern const CodecLayout kAvcByteStreamLayout;  // H.264 parameter sets with start codes
extern const CodecLayout kHevcByteStreamLayout; // H.265 parameter sets with start codes

} // namespace media
