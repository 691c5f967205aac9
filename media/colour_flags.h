// Colours in the control flags of VIDEOINFOHEADER2: the upper 24 bits are Microsoft's DXVA_ExtendedFormat where
// AMCONTROL_COLORINFO_PRESENT says so, with the values of Media Foundation's enumerations. They tell less than a track
// does: one value stands for the 601 matrices of both systems, and there is no room for a mastering display.
#pragma once

#include "media/colour.h"

namespace media {

// Of a format block, for a track.
[[nodiscard]] Colour ColourOfFlags(DWORD controlFlags);
// Of a track, for a format block; 0 where nothing of it fits.
[[nodiscard]] DWORD FlagsOfColour(const Colour& colour);

// Where flags cannot tell the other's value from the one that was taken of them, the other's counts.
void TakeExact(const Colour& other, Colour& ofFlags);

} // namespace media
