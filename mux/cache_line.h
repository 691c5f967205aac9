// How far apart two things must lie so that a write to one does not take the other away from another processor.
#pragma once

#include <cstddef>

inline constexpr size_t kCacheLineBytes = 64;
