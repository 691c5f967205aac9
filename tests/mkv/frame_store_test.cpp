#include "mkv/frame_store.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

TEST(FrameStoreTest, CopiesStayWhereTheyAreWhileOthersAreAdded) {
    mkv::CFrameStore store;
    std::vector<BYTE> frame{1, 2, 3};
    const BYTE* const first = store.append(std::span<const BYTE>(frame));
    EXPECT_NE(first, frame.data());
    frame.assign(3, 9);
    for (int i = 0; i < 1000; ++i) {
        store.append(std::span<const BYTE>(frame));
    }
    EXPECT_TRUE(std::equal(first, first + 3, std::vector<BYTE>{1, 2, 3}.begin()));
    EXPECT_EQ(store.totalBytes(), 3003u);
}

TEST(FrameStoreTest, TakesOverBytesWithoutAnotherCopy) {
    mkv::CFrameStore store;
    std::vector<BYTE> frame{1, 2, 3};
    const BYTE* const bytes = frame.data();
    EXPECT_EQ(store.append(std::move(frame)), bytes);
    EXPECT_EQ(store.totalBytes(), 3u);
}

TEST(FrameStoreTest, ResetFreesEverything) {
    mkv::CFrameStore store;
    store.append(std::vector<BYTE>(100));
    store.reset();
    EXPECT_EQ(store.totalBytes(), 0u);
}

} // namespace
