// A WebVTT cue in its three forms: its parts; a sample of boxes as ISO/IEC 14496-30 has it; and what Matroska puts into
// a block (the text) and beside it (a BlockAdditional: a line of settings, a line with the identifier, the comments).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

struct WebVttCue {
    std::string text;
    std::string settings;
    std::string identifier;
    std::string comments; // what stands in front of the cue
};

// Of anything: what is no box, or none of a cue, is passed over. Cues at the same time are joined, line by line, and
// have the settings and identifier of the first.
[[nodiscard]] WebVttCue CueOfBoxes(ByteView sample);
[[nodiscard]] std::vector<std::uint8_t> BoxesOfCue(const WebVttCue& cue);

// Fills all but the text.
void ReadCueAddition(ByteView addition, WebVttCue& cue);
// Empty when there is nothing but the text.
[[nodiscard]] std::string CueAddition(const WebVttCue& cue);

} // namespace codecs
