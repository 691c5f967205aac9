// The rules about locks and threads that debug and sanitizer builds assert: what breaks one ends the program.
#include <gtest/gtest.h>

#include <thread>

#include "win/condition_variable.h"
#include "win/critical_section.h"
#include "win/thread_checker.h"

GTEST_DECLARE_bool_(death_test_use_fork); // GoogleTest defines it without declaring it to users

namespace {

class ThreadRulesDeathTest : public ::testing::Test {
  protected:
    // Each death runs in a process of its own, started afresh, since some have threads. By fork: clone needs a stack
    // that GoogleTest cannot find under the sanitizer.
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        GTEST_FLAG_SET(death_test_use_fork, true);
    }

    win::CriticalSection m_lock;
    win::ConditionVariable m_condition;
    win::ThreadChecker m_thread;
};

TEST_F(ThreadRulesDeathTest, ALockKnowsWhetherThisThreadHoldsIt) {
    {
        const win::LockGuard lock(m_lock);
        const win::LockGuard again(m_lock);
        m_lock.AssertHeld();
        EXPECT_DEATH(std::thread([&] { m_lock.AssertHeld(); }).join(), "the lock is not held");
    }
    EXPECT_DEATH(m_lock.AssertHeld(), "the lock is not held");
}

TEST_F(ThreadRulesDeathTest, ALockIsStillHeldWhenASleepEnds) {
    const win::LockGuard lock(m_lock);
    (void)m_condition.Sleep(m_lock, 0);
    m_lock.AssertHeld();
}

TEST_F(ThreadRulesDeathTest, WhoeverSleepsHoldsTheLockOnce) {
    const auto sleepWithoutLock = [this]() QRX_NO_ANALYSIS { (void)m_condition.Sleep(m_lock, 0); };
    EXPECT_DEATH(sleepWithoutLock(), "the lock is not held");
    const win::LockGuard lock(m_lock);
    const win::LockGuard again(m_lock);
    EXPECT_DEATH(sleepWithoutLock(), "entered more than once");
}

TEST_F(ThreadRulesDeathTest, ABannedThreadNeverTakesTheLockAndOthersDo) {
    {
        const win::LockBan ban(m_lock);
        EXPECT_DEATH(m_lock.lock(), "must never take the lock");
        EXPECT_DEATH((void)m_lock.try_lock(), "must never take the lock");
        std::thread([&] { const win::LockGuard lock(m_lock); }).join();
    }
    const win::LockGuard lock(m_lock); // the ban is lifted
}

TEST_F(ThreadRulesDeathTest, AThreadsOwnMethodsRunOnThatThreadAlone) {
    EXPECT_DEATH(m_thread.AssertHere(), "on another's thread");
    {
        const win::ThreadScope here(m_thread);
        m_thread.AssertHere();
        EXPECT_DEATH(std::thread([&] { m_thread.AssertHere(); }).join(), "on another's thread");
        EXPECT_DEATH(std::thread([&] { m_thread.Enter(); }).join(), "another thread is inside already");
    }
    EXPECT_DEATH(m_thread.AssertHere(), "on another's thread");
    const win::ThreadScope anotherRun(m_thread);
}

} // namespace
