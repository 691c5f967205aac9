// A time that never goes back, for measuring how long something takes.
//
// Units: 100 ns since a moment that stays the same. Threads: any.
#pragma once

#include "win/platform.h"

namespace win {

[[nodiscard]] inline INT64 SteadyTime() {
    constexpr INT64 kUnitsPerSecond = 10'000'000;
    LARGE_INTEGER perSecond{};
    LARGE_INTEGER count{};
    QueryPerformanceFrequency(&perSecond);
    QueryPerformanceCounter(&count);
    // Whole seconds by themselves, so that no product is too large.
    return count.QuadPart / perSecond.QuadPart * kUnitsPerSecond +
           count.QuadPart % perSecond.QuadPart * kUnitsPerSecond / perSecond.QuadPart;
}

} // namespace win
