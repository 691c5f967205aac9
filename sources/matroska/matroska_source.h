// A source filter that reads Matroska and WebM files.
//
// Errors: VFW_E_INVALID_FILE_FORMAT for what is no Matroska file or has no tracks.
#pragma once

#include <memory>

#include "sources/base/byte_source.h"
#include "sources/base/opened_source.h"
#include "sources/matroska/time_rule.h"
#include "win/wide_string.h"

namespace matroska {

[[nodiscard]] HRESULT MakeSource(std::unique_ptr<source::ByteSource> bytes, source::OpenedSource& opened,
                                 TimeRule rule = TimeRule::AsStored);
// The file of that name.
[[nodiscard]] HRESULT OpenSource(const WideString& path, source::OpenedSource& opened,
                                 TimeRule rule = TimeRule::AsStored);

} // namespace matroska
