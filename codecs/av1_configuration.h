// The AV1CodecConfigurationRecord ("av1C") of the AV1 binding to the ISO base media file format, 2.3, which is the
// private data of Matroska's V_AV1, too.
//
// Units: bytes. Owner: what is returned is the caller's.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

inline constexpr size_t kAv1ConfigurationHeadBytes = 4;

// Whether the bytes begin as such a record; no unit begins so.
[[nodiscard]] bool IsAv1Configuration(ByteView bytes);

// From a record, from units, or from a whole temporal unit: the sequence header with the metadata that stands beside
// it, each with its size. A record whose head and header agree stays as it is. None without a sequence header that can
// be read.
[[nodiscard]] std::optional<std::vector<uint8_t>> BuildAv1Configuration(ByteView bytes);

} // namespace codecs
