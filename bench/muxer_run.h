// The muxer at work: every input delivers its packets from a thread of its own, as fast as they are taken.
#pragma once

#include "bench/load.h"
#include "win/platform.h"

namespace bench {

// The seconds from the first Receive until Stop has returned and the file is finished. Errors: std::runtime_error.
[[nodiscard]] double MuxSeconds(const Load& load, IStream& stream);

} // namespace bench
