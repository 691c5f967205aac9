// Sound, text and subtitles as strict files describe them.
#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::CodecDescription;
using media::DescribeStrictCodec;
using mkv_test::Bytes;
using mkv_test::Concat;
using mkv_test::FromHex;
using mkv_test::ToHex;
using test_support::AudioShape;
using test_support::MediaTypeValue;

CodecDescription WaveDescription(const GUID& subtype, const AudioShape& shape = {}, const Bytes& extra = {}) {
    return DescribeStrictCodec(test_support::WaveType(subtype, shape, extra).Get());
}

std::string PrivateOf(const CodecDescription& described) {
    return described.codecPrivate ? ToHex(*described.codecPrivate) : "none";
}

// Rate, rate that comes out, channels.
std::string RatesOf(const CodecDescription& described) {
    if (!described.audio) {
        return "no sound";
    }
    const auto& audio = *described.audio;
    return std::to_string(audio.samplingFrequencyHz) + " " +
           (audio.outputSamplingFrequencyHz ? std::to_string(*audio.outputSamplingFrequencyHz) : "-") + " " +
           std::to_string(audio.channels);
}

TEST(StrictAudioTest, OnlyWhatHasADepthTellsOne) {
    for (const GUID& subtype : {mediasubtype::kPcm, mediasubtype::kIeeeFloat, mediasubtype::kTta1, mediasubtype::kDts,
                                mediasubtype::kWavPack4, mediasubtype::kFlacFramed, mediasubtype::kMuLaw}) {
        EXPECT_EQ(WaveDescription(subtype).audio->bitDepth, 16u) << ToHex(Bytes{static_cast<BYTE>(subtype.Data1)});
    }
    for (const GUID& subtype :
         {mediasubtype::kDolbyAc3, mediasubtype::kDolbyDdPlus, mediasubtype::kDolbyTrueHd, mediasubtype::kMp3,
          mediasubtype::kMpeg1Audio, mediasubtype::kRawAac, mediasubtype::kOpus}) {
        EXPECT_FALSE(WaveDescription(subtype).audio->bitDepth) << ToHex(Bytes{static_cast<BYTE>(subtype.Data1)});
    }
    EXPECT_FALSE(WaveDescription(mediasubtype::kDts, {48000, 2, 0}).audio->bitDepth);
}

TEST(StrictAudioTest, NothingIsLacedAndNoPrivateDataIsEmpty) {
    const CodecDescription described = WaveDescription(mediasubtype::kTta1);
    EXPECT_EQ(described.lacing, false);
    EXPECT_EQ(PrivateOf(described), "none");
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kTta1, {}, FromHex("aabb"))), "aabb");
    EXPECT_EQ(described.codecDelayNs, 0u);
    EXPECT_EQ(described.seekPreRollNs, 0u);
}

TEST(StrictAudioTest, SoundWithoutARateOrChannelsHasNoCodec) {
    EXPECT_EQ(WaveDescription(mediasubtype::kMp3, {0, 2}).codecId, "");
    EXPECT_EQ(WaveDescription(mediasubtype::kMp3, {48000, 0}).codecId, "");
    EXPECT_EQ(WaveDescription(mediasubtype::kMp3).codecId, "A_MPEG/L3");
}

TEST(StrictAudioTest, TheDepthOfPcmComesFromItsBlocksIfNeedBe) {
    MediaTypeValue type = test_support::WaveType(mediasubtype::kPcm, {48000, 2, 0});
    reinterpret_cast<WAVEFORMATEX*>(type->pbFormat)->nBlockAlign = 6;
    EXPECT_EQ(DescribeStrictCodec(type.Get()).audio->bitDepth, 24u);
    reinterpret_cast<WAVEFORMATEX*>(type->pbFormat)->nBlockAlign = 0;
    EXPECT_EQ(DescribeStrictCodec(type.Get()).codecId, "");
}

TEST(StrictAudioTest, MpegAudioTellsItsLayer) {
    EXPECT_EQ(WaveDescription(mediasubtype::kMpeg1Audio).codecId, "A_MPEG/L2");
    EXPECT_EQ(WaveDescription(mediasubtype::kMpeg1Audio, {}, FromHex("0100")).codecId, "A_MPEG/L1");
    EXPECT_EQ(WaveDescription(mediasubtype::kMpeg1Audio, {}, FromHex("0200")).codecId, "A_MPEG/L2");
    EXPECT_EQ(WaveDescription(mediasubtype::kMpeg1Audio, {}, FromHex("0400")).codecId, "A_MPEG/L3");
    EXPECT_EQ(WaveDescription(mediasubtype::kMpeg1Audio, {}, FromHex("01")).codecId, "A_MPEG/L2");
}

TEST(StrictAudioTest, RealAudioNamesItsCodec) {
    EXPECT_EQ(WaveDescription(SubtypeFromWaveTag(0x2002)).codecId, "A_REAL/14_4");
    EXPECT_EQ(WaveDescription(SubtypeFromWaveTag(0x2004)).codecId, "A_REAL/COOK");
    EXPECT_EQ(WaveDescription(SubtypeFromWaveTag(0x0270)).codecId, "A_REAL/ATRC");
    EXPECT_EQ(WaveDescription(SubtypeFromWaveTag(0x0270)).audio->bitDepth, 16u);
}

// ---- AAC

TEST(StrictAudioTest, AacKeepsItsConfiguration) {
    const CodecDescription described = WaveDescription(mediasubtype::kRawAac, {}, FromHex("1190"));
    EXPECT_EQ(PrivateOf(described), "1190");
    EXPECT_EQ(RatesOf(described), "48000 - 2");
    EXPECT_EQ(described.codecDelayNs, 0u);
}

TEST(StrictAudioTest, AacWithSpectralBandReplicationTellsBothRates) {
    // Type 5, 24000 Hz, stereo, 48000 Hz, type 2; and the same behind the configuration of the core.
    EXPECT_EQ(RatesOf(WaveDescription(mediasubtype::kRawAac, {48000, 2}, FromHex("2b1188"))), "24000 48000 2");
    EXPECT_EQ(RatesOf(WaveDescription(mediasubtype::kRawAac, {24000, 2}, FromHex("131056e598"))), "24000 48000 2");
    // Said to be absent, and cut.
    EXPECT_EQ(RatesOf(WaveDescription(mediasubtype::kRawAac, {24000, 2}, FromHex("131056e500"))), "24000 - 2");
    EXPECT_EQ(RatesOf(WaveDescription(mediasubtype::kRawAac, {24000, 2}, FromHex("131056e5"))), "24000 - 2");
    // With parametric stereo, of one channel; and with rates that no table has.
    EXPECT_EQ(RatesOf(WaveDescription(mediasubtype::kRawAac, {48000, 2}, FromHex("eb098800"))), "24000 48000 2");
    EXPECT_EQ(RatesOf(WaveDescription(mediasubtype::kRawAac, {1, 2}, FromHex("1780 5dc0 10"))), "48000 - 2");
}

TEST(StrictAudioTest, AConfigurationThatIsDamagedLeavesTheBlocksRate) {
    for (const char* damaged : {"11", "1690", "1f", "0710", "2f", "2b"}) {
        const CodecDescription described = WaveDescription(mediasubtype::kRawAac, {44100, 1}, FromHex(damaged));
        EXPECT_EQ(RatesOf(described), "44100 - 1") << damaged;
        EXPECT_EQ(PrivateOf(described), damaged);
    }
}

TEST(StrictAudioTest, TheConfigurationTellsChannelsThatTheBlockDoesNot) {
    EXPECT_EQ(RatesOf(WaveDescription(mediasubtype::kRawAac, {0, 0}, FromHex("11b8"))), "48000 - 8");
    EXPECT_EQ(WaveDescription(mediasubtype::kRawAac, {0, 0}, FromHex("1180")).codecId, "");
}

TEST(StrictAudioTest, WithoutAConfigurationAacIsOfLowComplexity) {
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kRawAac, {48000, 2})), "1190");
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kRawAac, {44100, 1})), "1208");
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kRawAac, {96000, 8})), "1038");
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kRawAac, {12345, 2})), "1780181c90");
    EXPECT_EQ(WaveDescription(mediasubtype::kRawAac, {48000, 7}).codecId, "");
    EXPECT_EQ(WaveDescription(mediasubtype::kRawAac, {48000, 9}).codecId, "");
    EXPECT_EQ(WaveDescription(mediasubtype::kRawAac, {0x1000000, 2}).codecId, "");
    EXPECT_EQ(WaveDescription(mediasubtype::kRawAac, {0, 2}).codecId, "");
}

// ---- Opus

const char* const kStereoHead = "4f70757348656164 01 02 3801 44ac0000 0000 00";

TEST(StrictAudioTest, OpusTellsItsDelayAndPreRoll) {
    const CodecDescription described = WaveDescription(mediasubtype::kOpus, {44100, 1}, FromHex(kStereoHead));
    EXPECT_EQ(described.codecDelayNs, 6'500'000u); // 312 samples
    EXPECT_EQ(described.seekPreRollNs, 80'000'000u);
    EXPECT_EQ(RatesOf(described), "48000 - 2");
    EXPECT_EQ(ToHex(*described.codecPrivate), ToHex(FromHex(kStereoHead)));
}

TEST(StrictAudioTest, ADelayIsRoundedToTheNearestNanosecond) {
    EXPECT_EQ(
        WaveDescription(mediasubtype::kOpus, {}, FromHex("4f70757348656164 01 02 0100 44ac0000 0000 00")).codecDelayNs,
        20833u);
    EXPECT_EQ(
        WaveDescription(mediasubtype::kOpus, {}, FromHex("4f70757348656164 01 02 0200 44ac0000 0000 00")).codecDelayNs,
        41667u);
    EXPECT_EQ(
        WaveDescription(mediasubtype::kOpus, {}, FromHex("4f70757348656164 01 02 ffff 44ac0000 0000 00")).codecDelayNs,
        1'365'312'500u);
}

TEST(StrictAudioTest, OpusWithoutAHeaderGetsOneOfUpToTwoChannels) {
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kOpus, {44100, 2})), "4f707573486561640102000044ac0000000000");
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kOpus, {48000, 1})), "4f7075734865616401010000"
                                                                           "80bb0000"
                                                                           "000000");
    EXPECT_EQ(WaveDescription(mediasubtype::kOpus, {48000, 2}).codecDelayNs, 0u);
    EXPECT_EQ(WaveDescription(mediasubtype::kOpus, {48000, 3}).codecId, "");
    EXPECT_EQ(WaveDescription(mediasubtype::kOpus, {48000, 0}).codecId, "");
}

TEST(StrictAudioTest, AHeaderThatIsNoneIsReplaced) {
    const std::string made = PrivateOf(WaveDescription(mediasubtype::kOpus, {48000, 2}));
    const Bytes whole = FromHex(kStereoHead);
    for (size_t size = 0; size < whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kOpus, {48000, 2}, cut)), made) << size;
    }
    for (const char* other : {"4f70757348656165 01 02 3801 44ac0000 0000 00", // another magic
                              "4f70757348656164 11 02 3801 44ac0000 0000 00", // another version
                              "4f70757348656164 01 00 3801 44ac0000 0000 00", // no channel
                              "4f70757348656164 01 03 3801 44ac0000 0000 00", // too many without a mapping
                              "4f70757348656164 01 03 3801 44ac0000 0000 01 02 01 00 02"}) { // a mapping that is cut
        EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kOpus, {48000, 2}, FromHex(other))), made) << other;
    }
}

TEST(StrictAudioTest, AMappingOfManyChannelsIsKept) {
    const Bytes head = FromHex("4f70757348656164 01 06 3801 80bb0000 0000 01 04 02 000401020305");
    const CodecDescription described = WaveDescription(mediasubtype::kOpus, {48000, 6}, head);
    EXPECT_EQ(PrivateOf(described), ToHex(head));
    EXPECT_EQ(RatesOf(described), "48000 - 6");
}

// ---- FLAC

TEST(StrictAudioTest, FlacGetsItsMarker) {
    const Bytes info(34, 0x11);
    const std::string whole = "664c6143"
                              "80000022" +
                              ToHex(info);
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kFlacFramed, {}, info)), whole);
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kFlacFramed, {}, Concat({FromHex("80000022"), info}))), whole);
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kFlacFramed, {}, FromHex(whole))), whole);
    const Bytes more = Concat({FromHex("00000022"), info, FromHex("84000000")});
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kFlacFramed, {}, more)), "664c6143" + ToHex(more));
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kFlacFramed, {}, FromHex("0102"))), "0102");
    EXPECT_EQ(PrivateOf(WaveDescription(mediasubtype::kFlacFramed)), "none");
}

// ---- Text and subtitles

TEST(StrictTextTest, PlainTextIsUtf8AndNothingLastsThreeSeconds) {
    const CodecDescription described = DescribeStrictCodec(test_support::TextType().Get());
    EXPECT_EQ(described.codecId, "S_TEXT/UTF8");
    EXPECT_FALSE(described.defaultDurationNs);
    EXPECT_FALSE(described.codecPrivate);
    EXPECT_EQ(described.lacing, false);
    EXPECT_FALSE(DescribeStrictCodec(test_support::SubtitleType(mediasubtype::kAss).Get()).defaultDurationNs);
}

TEST(StrictTextTest, SubtitlesKeepTheHeaderThatTheirCodecHas) {
    const auto header = [](const GUID& subtype, const char* hex) {
        return PrivateOf(DescribeStrictCodec(test_support::SubtitleType(subtype, FromHex(hex)).Get()));
    };
    EXPECT_EQ(header(mediasubtype::kAss, "5b53"), "5b53");
    EXPECT_EQ(header(mediasubtype::kSsa, "5b530000"), "5b53");
    EXPECT_EQ(header(mediasubtype::kUsf, "0000"), "none");
    EXPECT_EQ(header(mediasubtype::kVobSub, "6900"), "69");
    EXPECT_EQ(header(mediasubtype::kUtf8, "efbbbf"), "none");
    EXPECT_EQ(header(GUID_NULL, "aabb"), "none");
}

TEST(StrictAudioTest, ATypeWithoutAMappingHasNoCodec) {
    EXPECT_EQ(WaveDescription(SubtypeFromWaveTag(0x1234)).codecId, "");
    MediaTypeValue type = test_support::WaveType(mediasubtype::kRawAac);
    type->cbFormat = 17;
    EXPECT_EQ(DescribeStrictCodec(type.Get()).codecId, "");
    EXPECT_EQ(DescribeStrictCodec(AM_MEDIA_TYPE{}).codecId, "");
}

} // namespace
