#include "tools/mkvmux/interruption.h"

#include <atomic>

#include "tools/mkvmux/failure.h"

namespace mkvmux {

namespace {

// The handler gets no context; the one Interruption of the program is found through this.
std::atomic<Interruption*> g_current{nullptr};

} // namespace

Interruption::Interruption() : m_requested(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    if (!m_requested) {
        throw Failure("no event can be created");
    }
    g_current = this;
    SetConsoleCtrlHandler(OnControl, TRUE);
}

Interruption::~Interruption() {
    SetConsoleCtrlHandler(OnControl, FALSE);
    g_current = nullptr;
}

bool Interruption::IsRequested() const {
    return WaitForSingleObject(m_requested.Get(), 0) == WAIT_OBJECT_0;
}

void Interruption::Request() {
    SetEvent(m_requested.Get());
}

BOOL WINAPI Interruption::OnControl(DWORD kind) {
    Interruption* const current = g_current;
    return current == nullptr ? FALSE : current->Handle(kind);
}

BOOL Interruption::Handle(DWORD kind) {
    if (kind == CTRL_C_EVENT || kind == CTRL_BREAK_EVENT) {
        if (IsRequested()) {
            return FALSE; // the second one: the system's own handler ends the process
        }
        Request();
        return TRUE;
    }
    // The console closes: the process lives until this returns, or until the system loses its patience.
    Request();
    Sleep(INFINITE);
    return TRUE;
}

} // namespace mkvmux
