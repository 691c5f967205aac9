// A part of the head whose first write failed is written again when the file is finished: to its own place.
#include <gtest/gtest.h>

#include "tests/mkv/writer_fixture.h"
#include "tests/support/layout_check.h"

namespace {

using test_support::StreamOperation;

class LostHeadTest : public WriterTest, public testing::WithParamInterface<MuxProfile> {
  protected:
    // The head leaves in two writes: all before the tracks, and the tracks.
    void LoseWrite(UINT64 number) {
        m_stream.FailNth(StreamOperation::Write, number, STG_E_MEDIUMFULL);
        RegisterVideo();
        records::FileOptions options;
        options.profile = GetParam();
        Open(options);
        for (INT64 frame = 0; frame < 3; ++frame) {
            Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, true);
        }
        Finish();
        const auto layout = Snapshot();
        EXPECT_TRUE(test_support::CheckLayout(layout).empty());
        EXPECT_EQ(layout.tracks.size(), 1u);
        EXPECT_EQ(layout.BlocksOf(1).size(), 3u);
    }
};

TEST_P(LostHeadTest, WhatStandsBeforeTheTracksIsWrittenToItsPlaceAtTheEnd) {
    LoseWrite(1);
}

TEST_P(LostHeadTest, TheTracksAreWrittenToTheirPlaceAtTheEnd) {
    LoseWrite(2);
}

INSTANTIATE_TEST_SUITE_P(Profiles, LostHeadTest, testing::Values(MuxProfile_Compatible, MuxProfile_Strict));

} // namespace
