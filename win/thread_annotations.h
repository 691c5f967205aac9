// The thread rules in a form that a program checks: clang's thread-safety analysis, which ./dev lint runs with every
// finding an error. Other compilers see nothing of it.
//
// A member names the lock that guards it (QRX_GUARDED_BY), a method the locks that its caller must hold (QRX_REQUIRES)
// or must not hold (QRX_EXCLUDES). The analysis looks at one function at a time and knows no lock inside a lambda;
// there, and wherever else it cannot see that a lock is held, the code says so with CriticalSection::AssertHeld, which
// is checked at run time. QRX_NO_ANALYSIS is for a function whose rule is another one; a comment tells which.
#pragma once

#if defined(__clang__)
#define QRX_THREAD_ATTRIBUTE(attribute) __attribute__((attribute))
#else
#define QRX_THREAD_ATTRIBUTE(attribute)
#endif

// Classes: one that can be held, by that word in the messages; one whose life is a hold of another.
#define QRX_CAPABILITY(word) QRX_THREAD_ATTRIBUTE(capability(word))
#define QRX_SCOPED_CAPABILITY QRX_THREAD_ATTRIBUTE(scoped_lockable)

// Members: what is read and written under the lock only; for a pointer, what it leads to.
#define QRX_GUARDED_BY(lock) QRX_THREAD_ATTRIBUTE(guarded_by(lock))
#define QRX_PT_GUARDED_BY(lock) QRX_THREAD_ATTRIBUTE(pt_guarded_by(lock))

// Functions: what the caller holds, or must not hold.
#define QRX_REQUIRES(...) QRX_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define QRX_EXCLUDES(...) QRX_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))

// Functions: what they do. Without an argument it is the object itself.
#define QRX_ACQUIRE(...) QRX_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define QRX_RELEASE(...) QRX_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define QRX_TRY_ACQUIRE(...) QRX_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define QRX_ASSERT_HELD(...) QRX_THREAD_ATTRIBUTE(assert_capability(__VA_ARGS__))
#define QRX_RETURN_LOCK(lock) QRX_THREAD_ATTRIBUTE(lock_returned(lock))

#define QRX_NO_ANALYSIS QRX_THREAD_ATTRIBUTE(no_thread_safety_analysis)
