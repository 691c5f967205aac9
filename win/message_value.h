// Pointers and handles travel through window messages and window data as integers.
#pragma once

#include "win/platform.h"

namespace win {

template <typename Pointer>
[[nodiscard]] Pointer FromMessageValue(LONG_PTR value) {
    return reinterpret_cast<Pointer>(value); // NOLINT(performance-no-int-to-ptr): the platform's own way
}

} // namespace win
