// The results of the mux core's internal operations: plain integers, not HRESULTs of the usual families.
#pragma once

#include "win/platform.h"

inline constexpr int kMuxOk = 0;
inline constexpr int kMuxFailed = -1;   // also: nothing could be taken in time
inline constexpr int kMuxStopping = -2; // the stop event is set
inline constexpr int kMuxAllEnded = -3; // every stream has ended, or there is none

// A bare -1 as an HRESULT (0xFFFFFFFF), which hooks and end of stream answer on purpose.
inline constexpr HRESULT kMuxFailedResult = kMuxFailed;
