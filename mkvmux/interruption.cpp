#include "mkvmux/interruption.h"

#include <mutex>

#include "mkvmux/console.h"
#include "mkvmux/exit_status.h"
#include "mkvmux/failure.h"
#include "mkvmux/graph_stopper.h"

namespace mkvmux {

namespace {

// The handler gets no context; the one Interruption of the program is found through this. The lock guards it and the
// stage: whoever ends the program at once holds it until the process is gone, so that nobody says another word.
// A mutex of the standard library, since it has no destructor: the handler may still come when the program ends.
std::mutex g_lock;
Interruption* g_current = nullptr;

// Nothing is unwound: another thread may be inside a splitter that does not come back.
[[noreturn]] void EndAtOnce(const char* line) {
    Console::Fail(line);
    LeaveAtOnce(kExitFailed);
}

constexpr char kNothingWritten[] = "interrupted; no output was written";

// What opens an input may not come back, nor who reads what is printed. To end the program is the last resort: its
// host may lose the status when other threads are at work.
constexpr DWORD kPatienceMs = 2000;

} // namespace

Interruption::Interruption() : m_requested(CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    if (!m_requested) {
        throw Failure("no event can be created");
    }
    const std::lock_guard lock(g_lock);
    g_current = this;
    SetConsoleCtrlHandler(OnControl, TRUE);
}

// The system's own handler would put a status of its own in the place of the program's.
Interruption::~Interruption() {
    const std::lock_guard lock(g_lock);
    g_current = nullptr;
}

void Interruption::Check() const {
    if (IsRequested()) {
        throw Failure(kNothingWritten);
    }
}

void Interruption::Enter(Stage stage) {
    const std::lock_guard lock(g_lock);
    Check();
    m_stage = stage;
}

bool Interruption::IsRequested() const {
    return WaitForSingleObject(m_requested.Get(), 0) == WAIT_OBJECT_0;
}

BOOL WINAPI Interruption::OnControl(DWORD kind) {
    const bool isKey = kind == CTRL_C_EVENT || kind == CTRL_BREAK_EVENT;
    bool mustEnd = false;
    {
        const std::lock_guard lock(g_lock);
        mustEnd = g_current != nullptr && g_current->Handle(isKey);
    }
    if (mustEnd) {
        Sleep(kPatienceMs); // the system goes on with this thread only as long as the program is there
        const std::lock_guard lock(g_lock);
        if (g_current != nullptr) {
            EndAtOnce(kNothingWritten);
        }
    }
    if (!isKey) {
        // The console closes: the process lives until this returns, or until the system loses its patience.
        Sleep(INFINITE);
    }
    return TRUE;
}

bool Interruption::Handle(bool mayBeSecond) {
    if (m_stage == Stage::Running && mayBeSecond && IsRequested()) {
        EndAtOnce("interrupted twice; the output is unfinished");
    }
    SetEvent(m_requested.Get());
    return m_stage == Stage::Preparing;
}

} // namespace mkvmux
