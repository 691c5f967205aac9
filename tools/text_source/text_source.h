// A source filter that reads SubRip, SSA and ASS files.
//
// Errors: VFW_E_INVALID_FILE_FORMAT for what holds no subtitles, or is larger than 64 MiB.
#pragma once

#include "tools/source_base/byte_source.h"
#include "tools/source_base/opened_source.h"
#include "win/wide_string.h"

namespace subtitles {

[[nodiscard]] HRESULT MakeSrtSource(const source::ByteSource& bytes, source::OpenedSource& opened);
[[nodiscard]] HRESULT MakeAssSource(const source::ByteSource& bytes, source::OpenedSource& opened);
// The files of that name.
[[nodiscard]] HRESULT OpenSrtSource(const WideString& path, source::OpenedSource& opened);
[[nodiscard]] HRESULT OpenAssSource(const WideString& path, source::OpenedSource& opened);

} // namespace subtitles
