// SplitterCheck: whether what the system's splitter offers can be what the file holds. A splitter that is wrong gives a
// file that is whole and holds something else.
#pragma once

#include <span>
#include <string>

#include "mkvmux/content_kind.h"
#include "mkvmux/source_streams.h"

namespace mkvmux {

// Why the streams cannot come from content of that kind; empty when they can.
[[nodiscard]] std::string ContradictionOf(ContentKind content, std::span<const SourceStream> streams);

// Why sound of this type that lasts so long cannot fill a file of this size; empty when it can, and for sound whose
// bytes a second nobody knows.
[[nodiscard]] std::string DoubtOf(const AM_MEDIA_TYPE& sound, REFERENCE_TIME duration, UINT64 fileBytes);
// The same for the only stream of a file.
[[nodiscard]] std::string DurationDoubtOf(std::span<const SourceStream> streams, const std::wstring& path);

} // namespace mkvmux
