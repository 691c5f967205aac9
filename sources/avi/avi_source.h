// A source filter that reads AVI files of every codec, for systems whose own splitter cannot stream one.
//
// Errors: VFW_E_INVALID_FILE_FORMAT for what is no AVI file; a damaged file ends where the damage is.
#pragma once

#include <memory>

#include "sources/base/byte_source.h"
#include "sources/base/opened_source.h"
#include "win/wide_string.h"

namespace avi {

[[nodiscard]] HRESULT MakeSource(std::unique_ptr<source::ByteSource> bytes, source::OpenedSource& opened);
// The file of that name.
[[nodiscard]] HRESULT OpenSource(const WideString& path, source::OpenedSource& opened);

} // namespace avi
