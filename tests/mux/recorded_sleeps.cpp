#include "tests/mux/recorded_sleeps.h"

namespace {

thread_local RecordedSleeps* t_sleeps = nullptr;

using SleepFunction = BOOL(WINAPI*)(CONDITION_VARIABLE*, CRITICAL_SECTION*, DWORD);

SleepFunction SleepOfTheSystem() {
    const FARPROC address = GetProcAddress(GetModuleHandleW(OLESTR("kernel32.dll")), "SleepConditionVariableCS");
    return reinterpret_cast<SleepFunction>(reinterpret_cast<void*>(address));
}

BOOL WINAPI RecordAndSleep(CONDITION_VARIABLE* variable, CRITICAL_SECTION* section, DWORD timeoutMs) {
    static const SleepFunction sleep = SleepOfTheSystem();
    if (t_sleeps != nullptr) {
        t_sleeps->Add(timeoutMs);
    }
    return sleep(variable, section, timeoutMs);
}

} // namespace

// The cell that every call of the imported function goes through; the linker takes this one before the system's.
extern "C" {
extern SleepFunction g_sleepImport asm("__imp_SleepConditionVariableCS");
SleepFunction g_sleepImport = RecordAndSleep;
}

RecordedSleeps::OfThisThread::OfThisThread(RecordedSleeps& sleeps) {
    t_sleeps = &sleeps;
}

RecordedSleeps::OfThisThread::~OfThisThread() {
    t_sleeps = nullptr;
}

void RecordedSleeps::Add(DWORD timeoutMs) {
    {
        const std::lock_guard lock(m_lock);
        m_timeoutsMs.push_back(timeoutMs);
    }
    m_more.notify_all();
}

bool RecordedSleeps::WaitFor(size_t count, std::chrono::milliseconds timeout) const {
    std::unique_lock lock(m_lock);
    return m_more.wait_for(lock, timeout, [&] { return m_timeoutsMs.size() >= count; });
}

std::vector<DWORD> RecordedSleeps::TimeoutsMs() const {
    const std::lock_guard lock(m_lock);
    return m_timeoutsMs;
}
