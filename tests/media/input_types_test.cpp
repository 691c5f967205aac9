// Which media types the inputs take, row by row.
#include "media/input_types.h"

#include <gtest/gtest.h>

#include <vector>

#include "dshow/media_subtypes.h"
#include "tests/support/media_types.h"

using namespace test_support;

namespace {

constexpr GUID kAnyFormat{0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};

bool Accepts(const GUID& major, const GUID& subtype, const GUID& format) {
    return media::IsAcceptedInputType(MediaTypeValue(major, subtype, format).Get());
}

TEST(InputTypes, SubtypesOfVideoThatAreAcceptedWithEveryFormat) {
    for (const GUID& subtype : {mediasubtype::kAvc1, mediasubtype::kH264AnnexB, mediasubtype::kMp4v,
                                mediasubtype::kHvc1, mediasubtype::kHevcAnnexB, mediasubtype::kTheora}) {
        EXPECT_TRUE(Accepts(MEDIATYPE_Video, subtype, kAnyFormat));
        EXPECT_TRUE(Accepts(MEDIATYPE_Video, subtype, GUID_NULL));
        EXPECT_FALSE(Accepts(MEDIATYPE_Audio, subtype, kAnyFormat));
    }
}

TEST(InputTypes, MpegVideoNeedsItsOwnFormat) {
    EXPECT_TRUE(Accepts(MEDIATYPE_Video, MEDIASUBTYPE_MPEG1Payload, FORMAT_MPEGVideo));
    EXPECT_FALSE(Accepts(MEDIATYPE_Video, MEDIASUBTYPE_MPEG1Payload, FORMAT_MPEG2Video));
    EXPECT_TRUE(Accepts(MEDIATYPE_Video, MEDIASUBTYPE_MPEG2_VIDEO, FORMAT_MPEG2Video));
    EXPECT_FALSE(Accepts(MEDIATYPE_Video, MEDIASUBTYPE_MPEG2_VIDEO, FORMAT_MPEGVideo));
    EXPECT_FALSE(Accepts(MEDIATYPE_Video, MEDIASUBTYPE_RGB24, FORMAT_MPEG2Video));
}

TEST(InputTypes, EverySubtypeOfVideoIsAcceptedWithVideoInfo) {
    for (const GUID& subtype : {MEDIASUBTYPE_RGB24, GUID_NULL, kAnyFormat, mediasubtype::kVp8, mediasubtype::kVp9}) {
        EXPECT_TRUE(Accepts(MEDIATYPE_Video, subtype, FORMAT_VideoInfo));
        EXPECT_TRUE(Accepts(MEDIATYPE_Video, subtype, FORMAT_VideoInfo2));
        EXPECT_FALSE(Accepts(MEDIATYPE_Video, subtype, kAnyFormat));
    }
}

TEST(InputTypes, AudioIsAcceptedByItsSubtype) {
    const std::vector<GUID> accepted = {
        mediasubtype::kAc3WaveTag, mediasubtype::kDolbyAc3,   mediasubtype::kDolbyDdPlus, mediasubtype::kDolbyTrueHd,
        mediasubtype::kMp3,        mediasubtype::kMpeg1Audio, mediasubtype::kDtsWaveTag,  mediasubtype::kDts,
        mediasubtype::kPcm,        mediasubtype::kIeeeFloat,  mediasubtype::kTta1,        mediasubtype::kWavPack4,
        mediasubtype::kVorbis,     mediasubtype::kFlacFramed, mediasubtype::kRawAac,      mediasubtype::kMuLaw,
        mediasubtype::kOpus};
    for (const GUID& subtype : accepted) {
        EXPECT_TRUE(Accepts(MEDIATYPE_Audio, subtype, kAnyFormat));
        EXPECT_FALSE(Accepts(MEDIATYPE_Video, subtype, kAnyFormat));
    }
    for (const int tag : {0x0161, 0x2002, 0x2003, 0x2004, 0x0130, 0x0270, 0x0006, 0x0000}) {
        EXPECT_FALSE(Accepts(MEDIATYPE_Audio, SubtypeFromWaveTag(static_cast<WORD>(tag)), FORMAT_WaveFormatEx));
    }
}

TEST(InputTypes, EveryTextIsAccepted) {
    EXPECT_TRUE(Accepts(MEDIATYPE_Text, GUID_NULL, GUID_NULL));
    EXPECT_TRUE(Accepts(MEDIATYPE_Text, kAnyFormat, kAnyFormat));
}

TEST(InputTypes, SubtitlesAreAcceptedByTheirSubtypeOrAsSubtitleInfo) {
    for (const GUID& subtype :
         {mediasubtype::kUtf8, mediasubtype::kSsa, mediasubtype::kAss, mediasubtype::kUsf, mediasubtype::kVobSub}) {
        EXPECT_TRUE(Accepts(mediatype::kSubtitle, subtype, kAnyFormat));
    }
    EXPECT_TRUE(Accepts(mediatype::kSubtitle, GUID_NULL, mediaformat::kSubtitleInfo));
    EXPECT_FALSE(Accepts(mediatype::kSubtitle, GUID_NULL, GUID_NULL));
    EXPECT_FALSE(Accepts(mediatype::kSubtitle, kAnyFormat, mediaformat::kSubtitleInfo));
}

TEST(InputTypes, OtherMajorTypesAreRefused) {
    EXPECT_FALSE(Accepts(MEDIATYPE_Stream, GUID_NULL, GUID_NULL));
    EXPECT_FALSE(Accepts(GUID_NULL, GUID_NULL, FORMAT_VideoInfo));
}

TEST(InputTypes, FourCCsAndWaveTagsTakeTheirDocumentedForm) {
    const GUID avc1{0x31435641, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
    const GUID mp3{0x00000055, 0x0000, 0x0010, {0x80, 0x00, 0x00, 0xaa, 0x00, 0x38, 0x9b, 0x71}};
    EXPECT_EQ(avc1, mediasubtype::kAvc1);
    EXPECT_EQ(mp3, mediasubtype::kMp3);
}

} // namespace
