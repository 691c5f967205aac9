// The thread functions that the C++ runtime calls, in place of the toolchain's library. That library opens handles for
// every thread which comes by and for its own locks, and a module that is unloaded cannot give them back: each load and
// unload would leave four behind in the host. These here are made of what needs no handle.
//
// Owner: the process; storage is the caller's, a word each, which the toolchain's header initialises with -1 and less.
// Threads: any. Locks are not recursive: the runtime enters none of its own twice.
// Errors: 0 or an errno value, as the toolchain's. A function missing here that somebody comes to use brings in the
// library's, and the linker then refuses the two sets.
#include <pthread.h>

#include <array>
#include <atomic>
#include <cerrno>

#include "win/platform.h"

namespace {

// ---- Locks ----

static_assert(sizeof(pthread_mutex_t) == sizeof(SRWLOCK) && sizeof(pthread_cond_t) == sizeof(CONDITION_VARIABLE));

// The word as the system wants it, which is 0 at first; the lowest of the header's values is -3.
template <typename Native, typename Word>
Native* NativeOf(Word* word) {
    std::atomic_ref<Word> value(*word);
    Word seen = value.load(std::memory_order_relaxed);
    while (seen < 0 && seen >= -3 && !value.compare_exchange_weak(seen, 0)) {
        // Another thread was first, or the exchange failed for nothing.
    }
    return reinterpret_cast<Native*>(word);
}

SRWLOCK* LockOf(pthread_mutex_t* mutex) {
    return NativeOf<SRWLOCK>(mutex);
}

CONDITION_VARIABLE* ConditionOf(pthread_cond_t* condition) {
    return NativeOf<CONDITION_VARIABLE>(condition);
}

// ---- What is done once ----

constexpr pthread_once_t kOnceRunning = 1;
constexpr pthread_once_t kOnceDone = 2;

SRWLOCK g_onceLock = SRWLOCK_INIT; // guards every change of a once flag
CONDITION_VARIABLE g_onceChanged = CONDITION_VARIABLE_INIT;

void SetOnce(pthread_once_t* once, pthread_once_t state) {
    AcquireSRWLockExclusive(&g_onceLock);
    std::atomic_ref(*once).store(state, std::memory_order_release);
    ReleaseSRWLockExclusive(&g_onceLock);
    WakeAllConditionVariable(&g_onceChanged);
}

// Whether the caller is the one to do it; else it has been done when this returns.
bool ClaimOnce(pthread_once_t* once) {
    AcquireSRWLockExclusive(&g_onceLock);
    while (*once == kOnceRunning) {
        SleepConditionVariableSRW(&g_onceChanged, &g_onceLock, INFINITE, 0);
    }
    const bool mine = *once != kOnceDone;
    if (mine) {
        *once = kOnceRunning;
    }
    ReleaseSRWLockExclusive(&g_onceLock);
    return mine;
}

// ---- What each thread has of its own ----

// The system calls the destructor when a thread ends and when the key is freed, which must be the last that happens
// before the module is gone: it is the first object to be made.
class ThreadKeys {
  public:
    ~ThreadKeys() {
        for (DWORD i = 0; i < m_count; ++i) {
            FlsFree(m_keys[i]);
        }
    }
    int Add(pthread_key_t* key, void (*destructor)(void*)) {
        if (m_count == m_keys.size()) {
            return EAGAIN;
        }
        const DWORD index = FlsAlloc(destructor);
        if (index == FLS_OUT_OF_INDEXES) {
            return EAGAIN;
        }
        m_keys[m_count++] = index;
        *key = index;
        return 0;
    }

  private:
    std::array<DWORD, 8> m_keys{}; // the runtime makes one
    std::atomic<DWORD> m_count{0};
};

__attribute__((init_priority(101))) ThreadKeys g_keys;

} // namespace

extern "C" {

int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* /*attributes*/) {
    *mutex = 0;
    return 0;
}

int pthread_mutex_destroy(pthread_mutex_t* /*mutex*/) {
    return 0;
}

int pthread_mutex_lock(pthread_mutex_t* mutex) {
    AcquireSRWLockExclusive(LockOf(mutex));
    return 0;
}

int pthread_mutex_unlock(pthread_mutex_t* mutex) {
    ReleaseSRWLockExclusive(LockOf(mutex));
    return 0;
}

int pthread_cond_wait(pthread_cond_t* condition, pthread_mutex_t* mutex) {
    SleepConditionVariableSRW(ConditionOf(condition), LockOf(mutex), INFINITE, 0);
    return 0;
}

int pthread_cond_broadcast(pthread_cond_t* condition) {
    WakeAllConditionVariable(ConditionOf(condition));
    return 0;
}

int pthread_once(pthread_once_t* once, void (*todo)()) {
    if (std::atomic_ref(*once).load(std::memory_order_acquire) == kOnceDone || !ClaimOnce(once)) {
        return 0;
    }
    try {
        todo();
    } catch (...) {
        SetOnce(once, PTHREAD_ONCE_INIT); // the next one tries again
        throw;
    }
    SetOnce(once, kOnceDone);
    return 0;
}

int pthread_key_create(pthread_key_t* key, void (*destructor)(void*)) {
    return g_keys.Add(key, destructor);
}

int pthread_setspecific(pthread_key_t key, const void* value) {
    return FlsSetValue(key, const_cast<void*>(value)) ? 0 : EINVAL;
}

void* pthread_getspecific(pthread_key_t key) {
    const DWORD error = GetLastError(); // which FlsGetValue clears, and no caller expects that
    void* const value = FlsGetValue(key);
    SetLastError(error);
    return value;
}

} // extern "C"
