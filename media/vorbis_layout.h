// Layout of the Vorbis format block, with its three header packets.
#pragma once

#include "media/codec_table.h"

namespace media {

extern const CodecLayout kVorbisLayout;

} // namespace media
