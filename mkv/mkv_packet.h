// MkvPacket: one media packet as the writer takes it; the bytes stay the caller's.
#pragma once

#include "win/platform.h"

struct MkvPacket {
    INT64 start = 0; // in units of 100 ns, as is stop; equal to it when the sample had no stop time
    INT64 stop = 0;
    const BYTE* data = nullptr;
    UINT32 size = 0; // bytes
    bool syncPoint = false;
    UINT32 stream = 0;       // the track, from 0, in the order of registration
    bool blockGroup = false; // written with its duration, and always a cue point
};
