// How long a test waits for what must come, however slow or busy the machine is. Only a failure ever waits that long.
#pragma once

#include <chrono>

namespace test_support {

inline constexpr std::chrono::minutes kWatchdog{3};

} // namespace test_support
