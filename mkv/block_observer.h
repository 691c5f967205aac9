// CBlockObserver: is told of each block that the file holds, once its cluster was written.
// Units: nanoseconds, bytes. Threads: the writer's.
#pragma once

#include "win/platform.h"

namespace mkv {

struct WrittenBlock {
    UINT16 track = 0;        // its number, from 1
    UINT64 payloadBytes = 0; // of the frame
    UINT64 timeNs = 0;       // as they stand in the file
    UINT64 endNs = 0;
};

class CBlockObserver {
  public:
    virtual void blockWritten(const WrittenBlock& block) noexcept = 0;

  protected:
    ~CBlockObserver() = default;
};

} // namespace mkv
