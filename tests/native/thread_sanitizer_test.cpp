// The thread sanitizer is awake: a race ends the program, and the locks and condition variables of the lane order what
// they guard.
#include <gtest/gtest.h>

#include <cstdlib>
#include <mutex>
#include <thread>

#include "win/condition_variable.h"
#include "win/critical_section.h"

namespace {

constexpr int kTurns = 1000;

class ThreadSanitizerDeathTest : public testing::Test {
  protected:
    // By a fresh start of this program: what runs with threads cannot be forked halfway.
    void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

// The same place twice, by two threads that know nothing of each other.
void CountUpTwice(int& count) {
    const auto countUp = [&count] {
        for (int i = 0; i < kTurns; ++i) {
            ++count;
        }
    };
    std::thread other(countUp);
    countUp();
    other.join();
}

TEST_F(ThreadSanitizerDeathTest, ARaceIsReported) {
    EXPECT_DEATH(
        {
            int count = 0;
            CountUpTwice(count);
            std::_Exit(0);
        },
        "ThreadSanitizer: data race");
}

TEST(ThreadSanitizerTest, WhatALockGuardsIsNoRace) {
    win::CriticalSection lock;
    int count = 0;
    const auto countUp = [&] {
        for (int i = 0; i < kTurns; ++i) {
            const win::LockGuard guard(lock);
            ++count;
        }
    };
    std::thread other(countUp);
    countUp();
    other.join();
    EXPECT_EQ(count, 2 * kTurns);
}

TEST(ThreadSanitizerTest, WhatIsHandedOverByAConditionVariableIsNoRace) {
    win::CriticalSection lock;
    win::ConditionVariable handed;
    bool isThere = false;
    int value = 0;
    std::thread giver([&] {
        value = 1;
        const win::LockGuard guard(lock);
        isThere = true;
        handed.WakeAll();
    });
    {
        const win::LockGuard guard(lock);
        while (!isThere) {
            (void)handed.Sleep(lock, INFINITE);
        }
    }
    EXPECT_EQ(value, 1);
    giver.join();
}

} // namespace
