// OwnSources: the source filters of our own, by the names and the contents of the files that they read.
//
// Errors: what a source answers when it cannot read the file.
#pragma once

#include <string>

#include "mkvmux/content_kind.h"
#include "sources/annexb/frame_rate.h"
#include "sources/base/opened_source.h"

namespace mkvmux {

struct OwnSourceOptions {
    annexb::FrameRate frameRate; // of files that do not say
    bool exactTimes = false;     // as strict files have them
};

struct OwnSource {
    const char* name; // "Matroska"
    HRESULT (*open)(const std::wstring& path, const OwnSourceOptions& options, source::OpenedSource& opened);
};

// The one for files whose names end like this; null for other names.
[[nodiscard]] const OwnSource* OwnSourceFor(const std::wstring& path);
// The one for this content; null for what the system's splitters come first for, and for what is not known.
[[nodiscard]] const OwnSource* OwnSourceFor(ContentKind content);
// The one for AVI files, where the system's splitter fails.
[[nodiscard]] const OwnSource& OwnAviSource();

} // namespace mkvmux
