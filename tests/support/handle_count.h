// How many handles of the kernel this process holds.
#pragma once

#include <cstddef>

namespace test_support {

// Where the system does not count them for one process (GetProcessHandleCount says 0), its list of all handles is
// counted instead.
[[nodiscard]] size_t OpenHandleCount();

} // namespace test_support
