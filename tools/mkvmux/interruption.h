// Interruption: Ctrl-C, Ctrl-Break and the closing of the console, as an event to wait for. The first one asks the
// run to end in order; a second Ctrl-C ends the program at once.
//
// Owner: one at a time, for as long as the run lasts; without one, Ctrl-C ends the program.
// Threads: the system calls the handler on a thread of its own.
#pragma once

#include "win/handle.h"
#include "win/platform.h"

namespace mkvmux {

class Interruption {
  public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    // Signalled from the first interruption on.
    [[nodiscard]] HANDLE Event() const { return m_requested.Get(); }
    [[nodiscard]] bool IsRequested() const;
    void Request();

  private:
    static BOOL WINAPI OnControl(DWORD kind);
    BOOL Handle(DWORD kind);

    win::KernelHandle m_requested;
};

} // namespace mkvmux
