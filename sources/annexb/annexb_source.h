// A source filter that reads H.264 and H.265 byte streams.
//
// Errors: VFW_E_INVALID_FILE_FORMAT for bytes without a picture.
#pragma once

#include <memory>

#include "sources/annexb/annexb_reader.h"
#include "sources/base/byte_source.h"
#include "sources/base/opened_source.h"
#include "win/wide_string.h"

namespace annexb {

[[nodiscard]] HRESULT MakeSource(std::unique_ptr<source::ByteSource> bytes, Codec codec, const FrameRate& rate,
                                 source::OpenedSource& opened);
// The file of that name.
[[nodiscard]] HRESULT OpenSource(const WideString& path, Codec codec, const FrameRate& rate,
                                 source::OpenedSource& opened);

} // namespace annexb
