// What this process has taken from the machine so far. Errors: std::runtime_error when the system does not say.
#pragma once

#include "win/platform.h"

namespace bench {

// User and kernel time of all threads.
[[nodiscard]] double ProcessCpuSeconds();
[[nodiscard]] UINT64 PeakWorkingSetBytes();

} // namespace bench
