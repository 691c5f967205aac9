// TrackProperties: what an input says about a track besides its media type; Attachment: a file that it carries.
//
// Units: texts are UTF-8, languages ISO 639-2 codes.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "media/colour.h"
#include "win/platform.h"

namespace source {

struct TrackProperties {
    bool known = false; // the input can tell; otherwise the rest are defaults
    std::string name;
    std::string language; // "eng"; "und" when the input leaves it open
    bool isDefault = true;
    bool isForced = false;
    bool isEnabled = true;
    // None: not said.
    std::optional<bool> hearingImpaired;
    std::optional<bool> visualImpaired;
    std::optional<bool> original;
    std::optional<bool> commentary;
    media::Colour colour;
    std::vector<BYTE> dolbyVision; // the configuration record; empty: none
};

struct Attachment {
    std::string fileName;
    std::string description;
    std::string mimeType;
    UINT64 uid = 0;
    std::vector<BYTE> data;
};

} // namespace source
