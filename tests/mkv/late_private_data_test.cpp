// The CodecPrivate of AV1 whose header comes with its first keyframe: in the file at once, in its place.
#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "tests/mkv/strict_fixture.h"
#include "tests/support/hex_bytes.h"

namespace {

using mkv_test::FromHex;
using mkv_test::ToHex;
using test_support::StreamOperation;

constexpr const char* kRecord = "81000c000a0a0000000337f8e6d7c802";
constexpr const char* kKeyframe = "12000a0a0000000337f8e6d7c8023203100102"; // delimiter, header, frame
constexpr const char* kInterframe = "120032023003";
constexpr uint32_t kCodecPrivate = 0x63a2;
constexpr uint32_t kVoid = 0xec;

class LatePrivateDataTest : public StrictTest {
  protected:
    void OpenAv1(const char* extra = "") {
        test_support::VideoShape shape;
        Register(test_support::VideoInfo2Type(mediasubtype::kAv01, shape, FromHex(extra)));
        OpenStrict();
    }
    void WriteFrame(INT64 number, const char* hex, bool isSyncPoint = false) {
        Write(0, number * 40 * kMs, (number + 1) * 40 * kMs, isSyncPoint, FromHex(hex));
    }
    // What the track's entry has of that element, in hex.
    static std::string InEntry(const Layout& layout, uint32_t id) {
        const auto* const tracks = layout.Segment()->Child(test_support::ebml_id::kTracks);
        const auto* const child = tracks == nullptr ? nullptr : tracks->children.at(0).Child(id);
        if (child == nullptr) {
            return "none";
        }
        const auto data = test_support::DataOf(layout.file, *child);
        return ToHex(Bytes(data.begin(), data.end()));
    }
};

TEST_F(LatePrivateDataTest, StandsInTheFileAsSoonAsTheFirstKeyframeCame) {
    OpenAv1();
    WriteFrame(0, kInterframe, true);
    EXPECT_EQ(InEntry(Snapshot(), kCodecPrivate), "none");
    WriteFrame(1, kKeyframe);
    EXPECT_EQ(InEntry(Snapshot(), kCodecPrivate), kRecord) << "of a recording that is cut off";
    EXPECT_EQ(InEntry(Snapshot(), kVoid).size(), 2 * (256 - 19 - 3)) << "what is left of the room";
    WriteFrame(2, kInterframe);
    EXPECT_EQ(InEntry(File(), kCodecPrivate), kRecord);
}

TEST_F(LatePrivateDataTest, KeyframesAreMarkedAsTheUnitsSayAndHaveNoDelimiters) {
    OpenAv1();
    WriteFrame(0, kKeyframe, false);
    WriteFrame(1, kInterframe, true);
    const auto blocks = File().BlocksOf(1);
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_TRUE(blocks[0].keyframe);
    EXPECT_FALSE(blocks[1].keyframe);
    EXPECT_EQ(blocks[1].frames.at(0).size(), FromHex(kInterframe).size() - 2);
}

TEST_F(LatePrivateDataTest, ATypeWithTheHeaderHasNoRoomForIt) {
    OpenAv1("0a0a0000000337f8e6d7c802");
    WriteFrame(0, kKeyframe);
    EXPECT_EQ(InEntry(File(), kCodecPrivate), kRecord);
    EXPECT_EQ(InEntry(File(), kVoid), "none");
}

TEST_F(LatePrivateDataTest, AWriteThatFailsIsMadeAgainAtTheEnd) {
    OpenAv1();
    m_stream.FailNth(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    WriteFrame(0, kKeyframe);
    WriteFrame(1, kInterframe);
    EXPECT_EQ(InEntry(Snapshot(), kCodecPrivate), "none");
    EXPECT_EQ(InEntry(File(), kCodecPrivate), kRecord);
    EXPECT_EQ(File().BlocksOf(1).size(), 2u);
}

TEST_F(LatePrivateDataTest, EachTrackHasItsOwn) {
    OpenAv1();
    m_writer.abandon();
    Register(test_support::VideoInfo2Type(mediasubtype::kAv01));
    Register(test_support::VideoInfo2Type(mediasubtype::kAv01));
    OpenStrict();
    Write(1, 0, 40 * kMs, true, FromHex(kKeyframe));
    const auto layout = Snapshot();
    const auto& entries = layout.Segment()->Child(test_support::ebml_id::kTracks)->children;
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].Child(kCodecPrivate), nullptr);
    EXPECT_NE(entries[1].Child(kCodecPrivate), nullptr);
    Finish();
}

} // namespace
