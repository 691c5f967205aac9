#include "mux/tick_clock.h"

#include <gtest/gtest.h>

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

namespace {

constexpr UINT64 kWrap = UINT64{1} << 32;

TEST(CTickClock, RunsOnWhenTheTickCountWraps) {
    CTickClock clock(0xFFFFFFF0);
    EXPECT_EQ(0xFFFFFFF0u, clock.Extend(0xFFFFFFF0));
    EXPECT_EQ(0xFFFFFFFFu, clock.Extend(0xFFFFFFFF));
    EXPECT_EQ(kWrap, clock.Extend(0));
    EXPECT_EQ(kWrap + 5, clock.Extend(5));
    EXPECT_EQ(2 * kWrap + 4, clock.Extend(4));
}

TEST(CTickClock, CountsAWrapBetweenConstructionAndTheFirstRead) {
    CTickClock clock(100);
    EXPECT_EQ(kWrap + 99, clock.Extend(99));
}

TEST(CTickClock, AnEqualTickIsNoWrap) {
    CTickClock clock(7);
    EXPECT_EQ(7u, clock.Extend(7));
    EXPECT_EQ(7u, clock.Extend(7));
}

#ifdef QRX_NATIVE
TEST(CTickClock, ReadsTheSystemsTickCountOverItsWrap) {
    native::ScopedTickCount ticks(0xFFFFFFFE);
    CTickClock clock;
    EXPECT_EQ(0xFFFFFFFEu, clock.Now());
    ticks.Advance(3);
    EXPECT_EQ(kWrap + 1, clock.Now());
}
#endif

} // namespace
