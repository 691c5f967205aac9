// Where the temporal units of an AV1 stream lie: one with sizes in its units (low overhead), each of which begins with
// a temporal delimiter, or one with lengths in front of all (AV1 specification, annex B).
//
// Units: bytes. Threads: any.
#pragma once

#include <optional>
#include <vector>

#include "sources/base/byte_source.h"

namespace av1 {

enum class StreamForm { LowOverhead, AnnexB };

struct TemporalUnit {
    UINT64 start = 0; // of its bytes, behind its length
    UINT64 end = 0;
};

// By its first units; none for what is no such stream.
[[nodiscard]] std::optional<StreamForm> FormOfStream(const source::ByteSource& file);

// The one that begins there; none where it is damaged, cut off, or larger than a packet may be.
[[nodiscard]] std::optional<TemporalUnit> FindTemporalUnit(const source::ByteSource& file, StreamForm form,
                                                           UINT64 position);

// From the bytes of one with lengths to units with sizes. Empty when they contradict each other.
[[nodiscard]] std::vector<BYTE> WithSizes(std::span<const BYTE> unit);

} // namespace av1
