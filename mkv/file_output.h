// CFileOutput: what a file asks of its output beyond the calls of libebml, so that it can count its positions itself
// and survives single failures.
// Units: bytes from the output's start. Owner: whoever opens the file. Threads: the writer's.
#pragma once

#include <optional>

#include <ebml/IOCallback.h>

namespace mkv {

class CFileOutput : public libebml::IOCallback {
  public:
    // Whether all bytes of the last write arrived.
    [[nodiscard]] virtual bool isLastWriteWhole() const { return true; }
    // Where the next byte goes; none when the output cannot tell.
    [[nodiscard]] virtual std::optional<uint64> position() { return getFilePointer(); }
    // Takes away what lies behind the end of the file, where the output can.
    virtual void cutOffAt(uint64 /*end*/) {}
};

} // namespace mkv
