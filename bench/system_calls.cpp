#include "bench/system_calls.h"

#include <array>
#include <atomic>

#include "bench/uncounted_section.h"

namespace bench {

namespace {

enum class CallGroup { Wait, Wake, Object, Contended };

std::array<std::atomic<UINT64>, 4> g_counts;

void Count(CallGroup group) {
    if (!UncountedSection::IsInside()) {
        ++g_counts[static_cast<size_t>(group)];
    }
}

UINT64 CountOf(CallGroup group) {
    return g_counts[static_cast<size_t>(group)];
}

// Stands in for one function; the row keeps functions of the same type apart.
template <int kRow, typename Function>
class Counted;

template <int kRow, typename Result, typename... Args>
class Counted<kRow, Result(WINAPI*)(Args...)> {
  public:
    static Replacement Row(const char* name, CallGroup group) {
        s_group = group;
        return {name, reinterpret_cast<void*>(&Call), reinterpret_cast<void**>(&s_original)};
    }

  private:
    static Result WINAPI Call(Args... args) {
        Count(s_group);
        return s_original(args...);
    }

    static inline CallGroup s_group{};
    static inline Result(WINAPI* s_original)(Args...) = nullptr;
};

// A lock that is free is taken here, without a word; any other has its caller wait, and is counted.
class CountedEnter {
  public:
    static Replacement Row() {
        return {"EnterCriticalSection", reinterpret_cast<void*>(&Call), reinterpret_cast<void**>(&s_original)};
    }

  private:
    static void WINAPI Call(CRITICAL_SECTION* section) {
        if (TryEnterCriticalSection(section) == FALSE) {
            Count(CallGroup::Contended);
            s_original(section);
        }
    }

    static inline void(WINAPI* s_original)(CRITICAL_SECTION*) = nullptr;
};

#define QRX_COUNTED(function, group) Counted<__COUNTER__, decltype(&function)>::Row(#function, CallGroup::group)

std::vector<Replacement> CountedFunctions() {
    return {
        QRX_COUNTED(WaitForSingleObject, Wait),
        QRX_COUNTED(WaitForSingleObjectEx, Wait),
        QRX_COUNTED(WaitForMultipleObjects, Wait),
        QRX_COUNTED(WaitForMultipleObjectsEx, Wait),
        QRX_COUNTED(MsgWaitForMultipleObjects, Wait),
        QRX_COUNTED(MsgWaitForMultipleObjectsEx, Wait),
        QRX_COUNTED(SignalObjectAndWait, Wait),
        QRX_COUNTED(SleepConditionVariableCS, Wait),
        QRX_COUNTED(SleepConditionVariableSRW, Wait),
        QRX_COUNTED(AcquireSRWLockExclusive, Wait),
        QRX_COUNTED(AcquireSRWLockShared, Wait),
        QRX_COUNTED(Sleep, Wait),
        QRX_COUNTED(SleepEx, Wait),
        QRX_COUNTED(SwitchToThread, Wait),
        QRX_COUNTED(SetEvent, Wake),
        QRX_COUNTED(ResetEvent, Wake),
        QRX_COUNTED(PulseEvent, Wake),
        QRX_COUNTED(ReleaseSemaphore, Wake),
        QRX_COUNTED(ReleaseMutex, Wake),
        QRX_COUNTED(WakeConditionVariable, Wake),
        QRX_COUNTED(WakeAllConditionVariable, Wake),
        QRX_COUNTED(QueueUserAPC, Wake),
        QRX_COUNTED(ResumeThread, Wake),
        QRX_COUNTED(CreateEventA, Object),
        QRX_COUNTED(CreateEventW, Object),
        QRX_COUNTED(CreateSemaphoreA, Object),
        QRX_COUNTED(CreateSemaphoreW, Object),
        QRX_COUNTED(CreateMutexA, Object),
        QRX_COUNTED(CreateMutexW, Object),
        QRX_COUNTED(CreateThread, Object),
        QRX_COUNTED(DuplicateHandle, Object),
        QRX_COUNTED(CloseHandle, Object),
        CountedEnter::Row(),
    };
}

#undef QRX_COUNTED

} // namespace

SystemCalls SystemCalls::operator-(const SystemCalls& earlier) const {
    return {waits - earlier.waits, wakes - earlier.wakes, objects - earlier.objects, contended - earlier.contended};
}

SystemCallCounter::SystemCallCounter() : m_imports(CountedFunctions()) {}

SystemCalls SystemCallCounter::Counts() {
    return {CountOf(CallGroup::Wait), CountOf(CallGroup::Wake), CountOf(CallGroup::Object),
            CountOf(CallGroup::Contended)};
}

} // namespace bench
