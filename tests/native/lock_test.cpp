// Critical sections and condition variables answer as documented. Built for both lanes.
#include <gtest/gtest.h>

#include <mutex>
#include <thread>

#include "win/critical_section.h"

namespace {

constexpr DWORD kShort_ms = 30;
constexpr DWORD kLong_ms = 10'000;

// Whether another thread could enter just now.
bool OthersMayEnter(win::CriticalSection& section) {
    bool entered = false;
    std::thread([&] {
        entered = section.try_lock();
        if (entered) {
            section.unlock();
        }
    }).join();
    return entered;
}

TEST(CriticalSectionContract, IsRecursiveAndOpensWithTheLastLeave) {
    win::CriticalSection section;
    section.lock();
    section.lock();
    EXPECT_TRUE(section.try_lock());
    EXPECT_FALSE(OthersMayEnter(section));
    section.unlock();
    section.unlock();
    EXPECT_FALSE(OthersMayEnter(section));
    section.unlock();
    EXPECT_TRUE(OthersMayEnter(section));
}

TEST(CriticalSectionContract, KeepsThreadsApart) {
    win::CriticalSection section;
    constexpr int kRounds = 20'000;
    int count = 0; // a plain integer: only the section protects it
    const auto work = [&] {
        for (int i = 0; i < kRounds; ++i) {
            const std::lock_guard lock(section);
            ++count;
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(count, 2 * kRounds);
}

struct Condition {
    Condition() {
        InitializeCriticalSection(&section);
        InitializeConditionVariable(&variable);
    }
    ~Condition() { DeleteCriticalSection(&section); }
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    CRITICAL_SECTION section;
    CONDITION_VARIABLE variable;
};

TEST(ConditionVariableContract, TimesOutWithTheSectionHeldAgain) {
    Condition condition;
    EnterCriticalSection(&condition.section);
    EXPECT_FALSE(SleepConditionVariableCS(&condition.variable, &condition.section, kShort_ms));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_TIMEOUT));
    bool othersMayEnter = true;
    std::thread([&] { othersMayEnter = TryEnterCriticalSection(&condition.section) != FALSE; }).join();
    EXPECT_FALSE(othersMayEnter);
    LeaveCriticalSection(&condition.section);
}

TEST(ConditionVariableContract, WakeAllReleasesEverySleeper) {
    Condition condition;
    bool open = false;
    int through = 0;
    const auto sleep = [&] {
        EnterCriticalSection(&condition.section);
        while (!open && SleepConditionVariableCS(&condition.variable, &condition.section, kLong_ms)) {
        }
        through += open ? 1 : 0;
        LeaveCriticalSection(&condition.section);
    };
    std::thread first(sleep);
    std::thread second(sleep);
    EnterCriticalSection(&condition.section); // possible only while the sleepers have left it
    open = true;
    LeaveCriticalSection(&condition.section);
    WakeAllConditionVariable(&condition.variable);
    first.join();
    second.join();
    EXPECT_EQ(through, 2);
}

} // namespace
