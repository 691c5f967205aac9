#include "codecs/video_signal.h"

namespace codecs {

namespace {

constexpr uint32_t kMaxChromaLocation = 5;

} // namespace

VideoSignal ReadVideoSignal(BitstreamReader& reader) {
    VideoSignal signal;
    if (reader.ReadFlag()) {
        reader.SkipBits(1); // overscan_appropriate_flag
    }
    if (reader.ReadFlag()) {
        reader.SkipBits(3); // video_format
        signal.isFullRange = reader.ReadFlag();
        if (reader.ReadFlag()) {
            signal.primaries = static_cast<uint8_t>(reader.ReadBits(8));
            signal.transfer = static_cast<uint8_t>(reader.ReadBits(8));
            signal.matrix = static_cast<uint8_t>(reader.ReadBits(8));
        }
    }
    if (reader.ReadFlag()) {
        const uint32_t location = reader.ReadUE();
        reader.ReadUE(); // of the bottom field
        if (location <= kMaxChromaLocation) {
            signal.chromaLocation = static_cast<uint8_t>(location);
        }
    }
    return reader.IsValid() ? signal : VideoSignal();
}

} // namespace codecs
