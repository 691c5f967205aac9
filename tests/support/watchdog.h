// How long a test waits for what must come, however slow or busy the machine is. Only a failure ever waits that long.
#pragma once

#include <chrono>

namespace test_support {

inline constexpr std::chrono::minutes kWatchdog{3};
inline constexpr unsigned kWatchdogMs = 3 * 60 * 1000;

} // namespace test_support
