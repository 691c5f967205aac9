// Interruption: Ctrl-C, Ctrl-Break and the closing of the console, from the first moment of main until its status is
// decided. What an interruption does depends on how far the program is; before the output is begun it ends the program,
// and during the run it asks for an end in order.
//
// Owner: main, one at a time. The handler stays when it is gone, and then leaves the status as it is.
// Threads: the system calls the handler on a thread of its own; the rest belongs to main's.
#pragma once

#include "win/handle.h"
#include "win/platform.h"

namespace mkvmux {

class Interruption {
  public:
    enum class Stage {
        Preparing, // one line and status 2: Check throws, or after some seconds without one the program is ended
        Saving,    // as Preparing, but not before the stage is over: a file is being replaced
        Running,   // the first one asks for the end; a second Ctrl-C ends the program, and the output stays unfinished
    };

    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    // To be asked between the steps of the preparation. Throws Failure.
    void Check() const;
    // Checks, too.
    void Enter(Stage stage);

    // Signalled from the first interruption on.
    [[nodiscard]] HANDLE Event() const { return m_requested.Get(); }
    [[nodiscard]] bool IsRequested() const;

  private:
    static BOOL WINAPI OnControl(DWORD kind);
    // Whether the program is to be ended unless it ends by itself.
    [[nodiscard]] bool Handle(bool mayBeSecond);

    win::KernelHandle m_requested;
    Stage m_stage = Stage::Preparing;
};

} // namespace mkvmux
