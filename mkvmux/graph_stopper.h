// GraphStopper: stops a graph without waiting for ever for a filter that does not stop. Such filters exist: the
// splitters of a common host wait, now and then, for a stream whose reader has just left.
//
// What counts is the muxer, which finishes the file as it stops: it gets all the time that it takes. A filter that
// hangs while the graph is paused, before any is stopped, is waited for.
//
// Threads: Stop is called from one; the graph's own Stop runs on another, which is left behind if it never returns.
#pragma once

#include "win/com_ptr.h"
#include "win/platform.h"

namespace mkvmux {

class GraphStopper {
  public:
    static constexpr DWORD kPatienceMs = 3000;

    // How long the filters have after the muxer, in milliseconds.
    explicit GraphStopper(DWORD patienceMs = kPatienceMs) : m_patienceMs(patienceMs) {}

    // False when the muxer has stopped and another filter has not: the graph cannot be taken apart then, and nothing
    // is left but to end the process (LeaveAtOnce).
    [[nodiscard]] bool Stop(const win::ComPtr<IMediaControl>& control, const win::ComPtr<IBaseFilter>& muxer) const;

  private:
    DWORD m_patienceMs;
};

// Ends the process with this exit status; no destructor runs and no module is told.
[[noreturn]] void LeaveAtOnce(int status);

} // namespace mkvmux
