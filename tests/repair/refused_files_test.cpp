// Files that are not repaired stay as they are.
#include <gmock/gmock.h>

#include "tests/repair/recording_fixture.h"

using testing::HasSubstr;

class RefusedFilesTest : public RecordingTest {};

TEST_P(RefusedFilesTest, WhatIsNoMatroskaFile) {
    EXPECT_EQ(RefusalOf({}), "it is no Matroska file");
    EXPECT_EQ(RefusalOf(Bytes(1000, 'x')), "it is no Matroska file");
}

TEST_P(RefusedFilesTest, WhatWasCutOffInItsHead) {
    Record();
    const UINT64 tracks = test_support::ReadLayout(m_finished).Segment()->Child(test_support::ebml_id::kTracks)->offset;
    for (UINT64 size = 0; size < HeadEnd(); ++size) {
        SCOPED_TRACE(size);
        const std::string refusal = RefusalOf(Bytes(m_cut.begin(), m_cut.begin() + static_cast<ptrdiff_t>(size)));
        ASSERT_NE(refusal, "it was repaired");
        if (size >= tracks) {
            ASSERT_EQ(refusal, "it was cut off before its tracks were written; nothing can be saved");
        }
    }
}

TEST_P(RefusedFilesTest, ATornClusterAloneOfWhichMoreCanBeReadThanARepairWouldKeep) {
    Record();
    for (UINT64 size = HeadEnd() + 1; size < ClusterStarts()[1]; ++size) {
        ASSERT_THAT(RefusalOf(Bytes(m_cut.begin(), m_cut.begin() + static_cast<ptrdiff_t>(size))),
                    HasSubstr("it holds no whole cluster; writing it anew may help"))
            << size;
    }
}

TEST_P(RefusedFilesTest, TheFileOfAnotherWriterWithTheAdviceToWriteItAnew) {
    Record();
    const auto layout = test_support::ReadLayout(m_cut);
    Bytes bytes = m_cut;
    const UINT64 place = layout.Segment()->DataOffset();
    bytes[place + 2] -= 1; // less room
    EXPECT_THAT(RefusalOf(bytes), HasSubstr("no recording of this muxer"));
    bytes = m_cut;
    bytes[place] = 0x15; // information where the seek head goes
    EXPECT_THAT(RefusalOf(bytes), HasSubstr("no recording of this muxer"));
    EXPECT_THAT(RefusalOf(bytes), HasSubstr("writing it anew may help: mkvmux -o NEW.mkv FILE"));
}

TEST_P(RefusedFilesTest, WhatIsDamagedInTheMiddle) {
    Record();
    const UINT64 damage = ClusterStarts()[2];
    Bytes bytes = m_cut;
    bytes[damage] = 0xff;
    EXPECT_THAT(RefusalOf(bytes), HasSubstr("damaged at byte " + std::to_string(damage) + ", with more of it behind"));
}

class RefusedStrictFilesTest : public RecordingTest {};

TEST_P(RefusedStrictFilesTest, InformationOfAnotherWriterOrWithoutRoomForTheDuration) {
    Record();
    const auto layout = test_support::ReadLayout(m_cut);
    const auto* const info = layout.Segment()->Child(test_support::ebml_id::kInfo);
    Bytes bytes = m_cut;
    bytes[info->Child(test_support::ebml_id::kWritingApp)->DataOffset()] = 'q';
    EXPECT_THAT(RefusalOf(bytes), HasSubstr("no recording of this muxer"));
    constexpr uint32_t kTitle = 0x7ba9;
    bytes = m_cut;
    const auto* const title = info->Child(kTitle);
    bytes[title->offset + title->idLength] += 1; // reaches into that room
    EXPECT_THAT(RefusalOf(bytes), HasSubstr("no recording of this muxer"));
}

INSTANTIATE_TEST_SUITE_P(Profiles, RefusedFilesTest, testing::Values(MuxProfile_Compatible, MuxProfile_Strict));
INSTANTIATE_TEST_SUITE_P(Profiles, RefusedStrictFilesTest, testing::Values(MuxProfile_Strict));
