// Format blocks of every length for every type that is accepted, and blocks of random bytes. Each block is an
// allocation of exactly its length, so the sanitizers see any read behind it.
#include <gtest/gtest.h>

#include <random>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "tests/media/encoder_parameter_sets.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::CodecIdOf;
using media::DescribeCodec;
using mkv_test::Bytes;
using mkv_test::ByteStream;
using mkv_test::FromHex;
using mkv_test::LengthPrefixed;
using test_support::MediaTypeValue;
using test_support::Mpeg2VideoType;
using test_support::SubtitleType;
using test_support::WaveType;

const Bytes kExtra = FromHex("112233445566778899");

struct BlockCase {
    MediaTypeValue type;
    size_t shortest;           // bytes that make a supported type of it
    bool needsNoBlock = false; // and so does no block at all
};

bool IsSupported(const BlockCase& block, size_t size) {
    return size >= block.shortest || (size == 0 && block.needsNoBlock);
}

std::vector<BlockCase> VideoCases() {
    const Bytes avc = LengthPrefixed({FromHex(mkv_test::kAvcSps), FromHex(mkv_test::kAvcPps)});
    const Bytes avcStream = ByteStream({FromHex(mkv_test::kAvcSps), FromHex(mkv_test::kAvcPps)});
    const mkv_test::HevcEncoderCase& hevc = mkv_test::kHevcEncoderCases[0];
    const Bytes hevcStream = ByteStream({FromHex(hevc.vps), FromHex(hevc.sps), FromHex(hevc.pps)});
    constexpr size_t kMpeg1Head = 96;
    constexpr size_t kMpeg2Head = 132;
    return {
        {test_support::Mpeg1VideoType({}, kExtra), kMpeg1Head + kExtra.size()},
        {Mpeg2VideoType(mediasubtype::kTheora, {}, kExtra), kMpeg2Head + kExtra.size()},
        {Mpeg2VideoType(MEDIASUBTYPE_MPEG2_VIDEO, {}, kExtra), kMpeg2Head + kExtra.size()},
        {Mpeg2VideoType(mediasubtype::kMp4v, {}, kExtra), kMpeg2Head + kExtra.size()},
        {Mpeg2VideoType(mediasubtype::kAvc1, {}, avc), kMpeg2Head + avc.size()},
        {Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, avcStream), kMpeg2Head + avcStream.size()},
        {Mpeg2VideoType(mediasubtype::kHvc1, {}, kExtra), kMpeg2Head + kExtra.size()},
        {Mpeg2VideoType(mediasubtype::kHevcAnnexB, {}, hevcStream), kMpeg2Head + hevcStream.size()},
        {Mpeg2VideoType(mediasubtype::kAvc1, {}, {}), kMpeg2Head},
        {test_support::VideoInfoType(mediasubtype::kVp8, {}, kExtra), 88},
        {test_support::VideoInfo2Type(mediasubtype::kVp9, {}, kExtra), 112},
        {test_support::VideoInfoType(GUID_NULL, {}, kExtra), 88},
        {test_support::VideoInfo2Type(GUID_NULL, {}, kExtra), 112},
    };
}

std::vector<BlockCase> AudioCases() {
    std::vector<BlockCase> cases;
    // These read the fields up to the bit depth, and nothing behind.
    for (const GUID& subtype :
         {mediasubtype::kAc3WaveTag, mediasubtype::kDolbyAc3, mediasubtype::kDolbyDdPlus, mediasubtype::kDolbyTrueHd,
          mediasubtype::kMp3, mediasubtype::kMpeg1Audio, mediasubtype::kDtsWaveTag, mediasubtype::kDts,
          mediasubtype::kPcm, mediasubtype::kIeeeFloat}) {
        cases.push_back({WaveType(subtype, {}, kExtra), 16});
    }
    for (const GUID& subtype : {mediasubtype::kTta1, mediasubtype::kWavPack4, mediasubtype::kFlacFramed,
                                mediasubtype::kRawAac, SubtypeFromWaveTag(0x2002), mediasubtype::kMuLaw}) {
        cases.push_back({WaveType(subtype, {}, kExtra), 18});
    }
    cases.push_back({WaveType(mediasubtype::kOpus, {}, kExtra), 18 + kExtra.size()});
    cases.push_back({test_support::VorbisType({}, {Bytes(30, 1), Bytes(5, 3), Bytes(300, 5)}), 24 + 335});
    return cases;
}

std::vector<BlockCase> SubtitleCases() {
    constexpr size_t kSubtitleInfo = sizeof(test_support::SubtitleInfo);
    std::vector<BlockCase> cases{{test_support::TextType(), 0}};
    for (const GUID& subtype : {mediasubtype::kUtf8, mediasubtype::kSsa, mediasubtype::kAss, mediasubtype::kUsf,
                                mediasubtype::kVobSub, GUID_NULL}) {
        cases.push_back({SubtitleType(subtype, kExtra), kSubtitleInfo, true});
    }
    return cases;
}

std::vector<BlockCase> AllCases() {
    std::vector<BlockCase> all = VideoCases();
    for (const std::vector<BlockCase>& more : {AudioCases(), SubtitleCases()}) {
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

TEST(CodecFormatBlockTest, ABlockOfAnyLengthIsSupportedFromTheLengthThatHoldsWhatItClaims) {
    for (const BlockCase& block : AllCases()) {
        const std::string codecId = CodecIdOf(block.type.Get());
        ASSERT_NE(codecId, "");
        for (size_t size = 0; size <= block.type.Format().size(); ++size) {
            const MediaTypeValue cut = block.type.CutTo(size);
            EXPECT_EQ(CodecIdOf(cut.Get()), IsSupported(block, size) ? codecId : "") << codecId << " cut to " << size;
        }
    }
}

TEST(CodecFormatBlockTest, AnUnsupportedBlockLeavesNothingOfItselfInTheDescription) {
    for (const BlockCase& block : AllCases()) {
        for (size_t size = 0; size < block.shortest; ++size) {
            const media::CodecDescription described = DescribeCodec(block.type.CutTo(size).Get());
            EXPECT_FALSE(described.video || described.audio || described.codecPrivate) << size;
        }
    }
}

TEST(CodecFormatBlockTest, ALengthWithoutABlockIsAnEmptyBlock) {
    for (const BlockCase& block : AllCases()) {
        AM_MEDIA_TYPE type = block.type.Get();
        type.pbFormat = nullptr;
        EXPECT_EQ(CodecIdOf(type), IsSupported(block, 0) ? CodecIdOf(block.type.Get()) : "");
    }
}

// cbSequenceHeader lies at 92 in MPEG1VIDEOINFO and at 116 in MPEG2VIDEOINFO.
TEST(CodecFormatBlockTest, ASequenceHeaderThatPointsOutsideTheBlockIsAnUnsupportedCodec) {
    for (BlockCase& block : VideoCases()) {
        const bool isMpeg1 = block.type->formattype == FORMAT_MPEGVideo;
        if (!isMpeg1 && block.type->formattype != FORMAT_MPEG2Video) {
            continue;
        }
        BYTE* const size = block.type->pbFormat + (isMpeg1 ? 92 : 116);
        const BYTE real = size[0];
        for (const BYTE highByte : {BYTE{0}, BYTE{0x7f}, BYTE{0xff}}) {
            size[0] = static_cast<BYTE>(real + 1);
            size[3] = highByte;
            EXPECT_EQ(CodecIdOf(block.type.Get()), "") << unsigned{real};
        }
        // A shorter one than there is room for is only shorter; a size of 0 leaves an empty header.
        size[0] = 0;
        size[3] = 0;
        EXPECT_NE(CodecIdOf(block.type.Get()), "");
        EXPECT_TRUE(DescribeCodec(block.type.Get()).codecPrivate.has_value());
    }
}

TEST(CodecFormatBlockTest, ASequenceHeaderOfEveryShorterLengthStaysWithinTheBlock) {
    for (BlockCase& block : VideoCases()) {
        if (block.type->formattype != FORMAT_MPEG2Video) {
            continue;
        }
        BYTE* const size = block.type->pbFormat + 116;
        for (unsigned shorter = size[0]; shorter-- > 0;) {
            size[0] = static_cast<BYTE>(shorter);
            // Cut to just this header: nothing lies behind it that could be read unnoticed.
            const MediaTypeValue cut = block.type.CutTo(132 + shorter);
            const media::CodecDescription described = DescribeCodec(cut.Get());
            EXPECT_EQ(described.codecId.empty(), !described.codecPrivate.has_value());
        }
    }
}

TEST(CodecFormatBlockTest, BlocksOfRandomBytesAreDescribedOrUnsupported) {
    std::mt19937 random(20240603);
    for (const BlockCase& block : AllCases()) {
        for (int round = 0; round < 300; ++round) {
            MediaTypeValue type(block.type);
            Bytes bytes(type.Format().begin(), type.Format().end());
            if (bytes.empty() || round % 3 == 0) {
                bytes.resize(random() % 700);
            }
            // Either all of it, or a few bytes in something that is nearly right.
            for (size_t i = 0; round % 3 == 0 && i < bytes.size(); ++i) {
                bytes[i] = static_cast<BYTE>(random());
            }
            for (size_t changes = random() % 6; changes > 0 && !bytes.empty(); --changes) {
                bytes[random() % bytes.size()] = static_cast<BYTE>(random());
            }
            type.SetFormat(bytes);
            const media::CodecDescription described = DescribeCodec(type.Get());
            EXPECT_FALSE(described.codecId.empty() && described.codecPrivate.has_value());
        }
    }
}

} // namespace
