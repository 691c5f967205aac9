// StreamTags: what an input says of one of its streams beside the media type. Only containers that know it have any.
#pragma once

#include <string>

namespace mkvmux {

struct StreamTags {
    std::wstring name;
    std::wstring language; // its English name, spelled as in the language list; empty: unknown
    bool isDefault = false;
    bool isForced = false;
    bool isEnabled = true;
};

} // namespace mkvmux
