// A source filter that reads AV1: IVF files, which may hold VP8 or VP9 instead, and streams of units (.obu).
//
// Errors: VFW_E_INVALID_FILE_FORMAT for what is no such file.
#pragma once

#include <memory>

#include "sources/annexb/frame_rate.h"
#include "sources/base/byte_source.h"
#include "sources/base/opened_source.h"
#include "win/wide_string.h"

namespace av1 {

// Null for what is no such file.
[[nodiscard]] std::unique_ptr<source::PacketReader> MakeIvfReader(std::unique_ptr<source::ByteSource> bytes);
// The rate is that of a stream that does not tell its own.
[[nodiscard]] std::unique_ptr<source::PacketReader> MakeObuReader(std::unique_ptr<source::ByteSource> bytes,
                                                                  const annexb::FrameRate& rate);

// The files of that name.
[[nodiscard]] HRESULT OpenIvfSource(const WideString& path, source::OpenedSource& opened);
[[nodiscard]] HRESULT OpenObuSource(const WideString& path, const annexb::FrameRate& rate,
                                    source::OpenedSource& opened);

} // namespace av1
