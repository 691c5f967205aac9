// What a track tells of its colours: its Colour element, and the configuration of Dolby Vision.
#pragma once

#include <vector>

#include "media/colour.h"
#include "sources/matroska/ebml_reader.h"

namespace matroska {

// Values that the format has no meaning for are left out.
[[nodiscard]] media::Colour ReadColour(const EbmlReader& reader, const Element& element);

// Of a BlockAdditionMapping; one that is something else changes nothing.
void ReadDolbyVision(const EbmlReader& reader, const Element& mapping, std::vector<BYTE>& configuration);

} // namespace matroska
