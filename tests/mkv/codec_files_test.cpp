// Files with real H.264 and H.265 pictures in both packagings: the same picture is stored either way, and other
// programs read the files too.
#include "codecs/hevc_configuration.h"
#include "tests/mkv/writer_fixture.h"
#include "tests/support/hex_bytes.h"

namespace {

using mkv_test::ByteStream;
using mkv_test::FromHex;
using mkv_test::LengthPrefixed;
using mkv_test::ToHex;
using test_support::MediaTypeValue;
using test_support::Mpeg2VideoType;
using test_support::VideoShape;

// One grey picture of 64x64, made with ffmpeg's libx264 and libx265 from its "color" source.
constexpr const char* kAvcSps = "6764000aacd94426c044000003000400000300c83c489658";
constexpr const char* kAvcPps = "68ebe3cb22c0";
constexpr const char* kAvcSlice = "658884002bfffef6737c257258e37992ef1db969e77acd03e01fe32809";
constexpr const char* kHevcVps = "40010c01ffff01600000030090000003000003001e959809";
constexpr const char* kHevcSps = "42010101600000030090000003000003001ea020810596566924caf0168080000003008000000c84";
constexpr const char* kHevcPps = "4401c172b42240";
constexpr const char* kHevcSlice = "2801af1d80f7015bd6beccf0";

constexpr VideoShape kShape{64, 64, 400000, 1, 1};

std::vector<BYTE> WithFourByteLength(const std::vector<BYTE>& unit) {
    std::vector<BYTE> sample{0, 0, 0, static_cast<BYTE>(unit.size())};
    sample.insert(sample.end(), unit.begin(), unit.end());
    return sample;
}

class CodecFilesTest : public WriterTest {
  protected:
    // One track with start codes, one with lengths, the same picture in both.
    void WriteBoth(const MediaTypeValue& byteStream, const MediaTypeValue& lengths, const Bytes& picture) {
        Register(byteStream);
        Register(lengths);
        Open();
        Write(0, 0, 40 * kMs, true, ByteStream({picture}));
        Write(1, 0, 40 * kMs, true, WithFourByteLength(picture));
    }
    std::string StoredFrame(uint64_t track) {
        const auto blocks = File().BlocksOf(track);
        return blocks.size() == 1 && blocks[0].frames.size() == 1 ? ToHex(blocks[0].frames[0]) : "not one frame";
    }
};

TEST_F(CodecFilesTest, H264PicturesAreStoredWithLengthsWhateverTheyCameWith) {
    const std::vector<Bytes> sets{FromHex(kAvcSps), FromHex(kAvcPps)};
    WriteBoth(Mpeg2VideoType(mediasubtype::kH264AnnexB, kShape, ByteStream(sets), 100, 10),
              Mpeg2VideoType(mediasubtype::kAvc1, kShape, LengthPrefixed(sets), 100, 10, 4), FromHex(kAvcSlice));
    for (const uint64_t track : {1u, 2u}) {
        ASSERT_NE(File().Track(track), nullptr);
        EXPECT_EQ(File().Track(track)->codecId, "V_MPEG4/ISO/AVC");
        EXPECT_EQ(File().Track(track)->codecPrivateSize, 7 + 2 + sets[0].size() + 2 + sets[1].size());
        EXPECT_EQ(StoredFrame(track), "0000001d" + std::string(kAvcSlice));
    }
}

TEST_F(CodecFilesTest, H265PicturesAreStoredWithLengthsWhateverTheyCameWith) {
    const Bytes sets = ByteStream({FromHex(kHevcVps), FromHex(kHevcSps), FromHex(kHevcPps)});
    const Bytes record = codecs::BuildHevcConfiguration(sets);
    WriteBoth(Mpeg2VideoType(mediasubtype::kHevcAnnexB, kShape, sets),
              Mpeg2VideoType(mediasubtype::kHvc1, kShape, record), FromHex(kHevcSlice));
    for (const uint64_t track : {1u, 2u}) {
        ASSERT_NE(File().Track(track), nullptr);
        EXPECT_EQ(File().Track(track)->codecId, "V_MPEGH/ISO/HEVC");
        EXPECT_EQ(File().Track(track)->codecPrivateSize, record.size());
        EXPECT_EQ(StoredFrame(track), "0000000c" + std::string(kHevcSlice));
    }
}

TEST_F(CodecFilesTest, ASampleOfNothingButStartCodesIsNoBlock) {
    Register(Mpeg2VideoType(mediasubtype::kH264AnnexB, kShape, {}));
    Open();
    Write(0, 0, 40 * kMs, true, FromHex("0000000100000001"));
    Write(0, 40 * kMs, 80 * kMs, true, FromHex(""));
    KeepFromJudges(); // a track without pictures and parameter sets tells them nothing
    EXPECT_TRUE(File().BlocksOf(1).empty());
}

TEST_F(CodecFilesTest, AnAspectRatioOfZeroIsWrittenAsItStands) {
    constexpr VideoShape kNoAspectRatio{320, 240, 400000, 0, 0};
    Register(test_support::VideoInfo2Type(SubtypeFromFourCC('c', 'v', 'i', 'd'), kNoAspectRatio));
    Open();
    Write(0, 0, 40 * kMs, true);
    using namespace test_support::ebml_id;
    for (const uint32_t id : {kDisplayWidth, kDisplayHeight}) {
        const auto* const size = Element({kTracks, kTrackEntry, kVideo, id});
        ASSERT_NE(size, nullptr);
        EXPECT_EQ(test_support::UnsignedOf(File().file, *size), 0u);
    }
}

TEST_F(CodecFilesTest, AnUnsupportedCodecThrowsItsTextFromOpen) {
    Register(Mpeg2VideoType(GUID_NULL, kShape, {}));
    EXPECT_EQ(ThrownByOpen(), "CMkvWriter::addTrack unsupported codec");
}

TEST_F(CodecFilesTest, AFormatBlockThatIsTooShortThrowsTheSameText) {
    Register(test_support::WaveType(mediasubtype::kPcm).CutTo(15));
    EXPECT_EQ(ThrownByOpen(), "CMkvWriter::addTrack unsupported codec");
}

} // namespace
