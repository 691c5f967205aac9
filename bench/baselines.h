// What a run of the muxer is compared with: the same packets in the same order, on one thread, with less around them.
//
// All return seconds, from the first packet to the finished file. Errors: std::runtime_error.
#pragma once

#include "bench/load.h"

namespace bench {

// The Matroska writer, handed its packets directly: no pins, no queue, no second thread; into a null stream.
[[nodiscard]] double BareWriterSeconds(const Load& load);
// libmatroska: blocks and clusters cut by the writer's rules, rendered into a buffer. The payload is copied there and
// nowhere else, and there is neither head nor finalisation.
[[nodiscard]] double BareLibrarySeconds(const Load& load);
// One memcpy of each payload into a buffer of one cluster's size.
[[nodiscard]] double CopySeconds(const Load& load);

} // namespace bench
