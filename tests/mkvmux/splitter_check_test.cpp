#include "mkvmux/splitter_check.h"

#include <gmock/gmock.h>

namespace mkvmux {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr REFERENCE_TIME kSecond = 10'000'000;

CMediaType Sound(WORD tag) {
    WAVEFORMATEX wave{};
    wave.wFormatTag = tag;
    wave.nChannels = 1;
    wave.nSamplesPerSec = 8000;
    wave.nBlockAlign = 2;
    CMediaType type;
    type.SetType(&MEDIATYPE_Audio);
    type.SetFormatType(&FORMAT_WaveFormatEx);
    EXPECT_TRUE(type.SetFormat(reinterpret_cast<const BYTE*>(&wave), sizeof(wave)));
    return type;
}

std::string ContradictionOf(ContentKind content, WORD tag) {
    SourceStream stream;
    stream.type = Sound(tag);
    return mkvmux::ContradictionOf(content, std::span(&stream, 1));
}

TEST(SplitterCheck, SoundThatIsOfferedAsAnotherKindIsAContradiction) {
    EXPECT_THAT(ContradictionOf(ContentKind::Adts, WAVE_FORMAT_MPEG), HasSubstr("holds AAC in ADTS frames, which the"));
    EXPECT_THAT(ContradictionOf(ContentKind::MpegAudio, 0x00ff), HasSubstr("holds MPEG audio"));
    EXPECT_THAT(ContradictionOf(ContentKind::Flac, WAVE_FORMAT_MPEGLAYER3), HasSubstr("holds FLAC"));
}

TEST(SplitterCheck, SoundOfItsKindOrOfNoneThatIsKnownIsNone) {
    EXPECT_THAT(ContradictionOf(ContentKind::Adts, 0x1600), IsEmpty());
    EXPECT_THAT(ContradictionOf(ContentKind::MpegAudio, WAVE_FORMAT_MPEG), IsEmpty());
    EXPECT_THAT(ContradictionOf(ContentKind::Adts, WAVE_FORMAT_PCM), IsEmpty()); // decoded
    EXPECT_THAT(ContradictionOf(ContentKind::Unknown, WAVE_FORMAT_MPEG), IsEmpty());
    EXPECT_THAT(ContradictionOf(ContentKind::Matroska, WAVE_FORMAT_MPEG), IsEmpty());
}

TEST(SplitterCheck, ADurationThatIsFarTooShortOrTooLongForTheFileIsDoubted) {
    const CMediaType pcm = Sound(WAVE_FORMAT_PCM); // 16,000 bytes a second
    EXPECT_THAT(DoubtOf(pcm, kSecond, 16'044), IsEmpty());
    EXPECT_THAT(DoubtOf(pcm, kSecond, 1'000'000), IsEmpty());
    EXPECT_EQ(DoubtOf(pcm, kSecond / 10, 50'000'000),
              "the system's splitter finds 0.10 s of sound in 50000000 bytes: a part may be lost");
    EXPECT_THAT(DoubtOf(pcm, 3600 * kSecond, 16'044), HasSubstr("3600.00 s of sound in 16044 bytes"));
    const CMediaType mpeg = Sound(WAVE_FORMAT_MPEG);
    EXPECT_THAT(DoubtOf(mpeg, 100 * kSecond, 5'600'000), IsEmpty());
    EXPECT_THAT(DoubtOf(mpeg, 100 * kSecond, 100'000), IsEmpty());
    EXPECT_THAT(DoubtOf(mpeg, kSecond / 10, 1'100'000), HasSubstr("0.10 s"));
}

TEST(SplitterCheck, WhatNobodyKnowsIsNotDoubted) {
    EXPECT_THAT(DoubtOf(Sound(WAVE_FORMAT_PCM), 0, 50'000'000), IsEmpty()) << "no duration is told";
    EXPECT_THAT(DoubtOf(Sound(0x2000), kSecond, 50'000'000), IsEmpty()) << "no rate is known";
    EXPECT_THAT(DoubtOf(CMediaType(), kSecond, 50'000'000), IsEmpty()) << "no sound";
}

} // namespace
} // namespace mkvmux
