// A source filter that reads SubRip, SSA, ASS and WebVTT files.
//
// Errors: VFW_E_INVALID_FILE_FORMAT for what holds no subtitles, or is larger than 64 MiB.
#pragma once

#include <memory>
#include <optional>
#include <string_view>

#include "sources/base/byte_source.h"
#include "sources/base/opened_source.h"
#include "sources/text/subtitle_file.h"
#include "win/wide_string.h"

namespace subtitles {

using Parser = std::optional<SubtitleFile> (*)(std::string_view text);
// None for what holds no subtitles or is too large.
[[nodiscard]] std::unique_ptr<source::PacketReader> MakeReader(const source::ByteSource& bytes, Parser parse);

[[nodiscard]] HRESULT MakeSrtSource(const source::ByteSource& bytes, source::OpenedSource& opened);
[[nodiscard]] HRESULT MakeAssSource(const source::ByteSource& bytes, source::OpenedSource& opened);
[[nodiscard]] HRESULT MakeVttSource(const source::ByteSource& bytes, source::OpenedSource& opened);
// The files of that name.
[[nodiscard]] HRESULT OpenSrtSource(const WideString& path, source::OpenedSource& opened);
[[nodiscard]] HRESULT OpenAssSource(const WideString& path, source::OpenedSource& opened);
[[nodiscard]] HRESULT OpenVttSource(const WideString& path, source::OpenedSource& opened);

} // namespace subtitles
