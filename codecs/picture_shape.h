// PictureShape: how large a picture is, and how it is to be shown.
//
// Units: pixels for the size, none for the aspect ratio.
#pragma once

#include <cstdint>

namespace codecs {

struct PictureShape {
    uint32_t width = 0; // of the visible part
    uint32_t height = 0;
    uint32_t aspectX = 0; // of the whole picture
    uint32_t aspectY = 0;
};

} // namespace codecs
