#include <gtest/gtest.h>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"

namespace {

using media::CodecDescription;
using media::DescribeSubtitleCodec;
using mkv_test::Bytes;
using mkv_test::FromHex;
using mkv_test::ToHex;
using test_support::MediaTypeValue;
using test_support::SubtitleType;

constexpr UINT64 kThreeSecondsNs = 3'000'000'000;
const Bytes kHeader = FromHex("5b536372697074");

struct RowCase {
    const char* name;
    GUID subtype;
    const char* codecId;
};

const RowCase kRowCases[] = {
    {"UTF-8", {0x87c0b230, 0x03a8, 0x4fdf, {0x80, 0x10, 0xb2, 0x7a, 0x58, 0x48, 0x20, 0x0d}}, "S_TEXT/UTF8"},
    {"SSA", {0x3020560f, 0x255a, 0x4ddc, {0x80, 0x6e, 0x6c, 0x5c, 0xc6, 0xdc, 0xd7, 0x0a}}, "S_TEXT/SSA"},
    {"ASS", {0x326444f7, 0x686f, 0x47ff, {0xa4, 0xb2, 0xc8, 0xc9, 0x63, 0x07, 0xb4, 0xc2}}, "S_TEXT/ASS"},
    {"USF", {0xb753b29a, 0x0a96, 0x45be, {0x98, 0x5f, 0x68, 0x35, 0x1d, 0x9c, 0xab, 0x90}}, "S_TEXT/USF"},
    {"VobSub", {0xf7239e31, 0x9599, 0x4e43, {0x8d, 0xd5, 0xfb, 0xaf, 0x75, 0xcf, 0x37, 0xf1}}, "S_VOBSUB"},
    {"PGS", GUID_NULL, "S_HDMV/PGS"},
};

std::string PrivateOf(const MediaTypeValue& type) {
    const CodecDescription described = DescribeSubtitleCodec(type.Get());
    return described.codecPrivate ? ToHex(*described.codecPrivate) : "none";
}

TEST(SubtitleCodecTest, EveryRowGivesItsCodecWithTheHeaderAndThreeSeconds) {
    for (const RowCase& row : kRowCases) {
        SCOPED_TRACE(row.name);
        const MediaTypeValue type = SubtitleType(row.subtype, kHeader);
        const CodecDescription described = DescribeSubtitleCodec(type.Get());
        EXPECT_EQ(described.codecId, row.codecId);
        EXPECT_EQ(PrivateOf(type), ToHex(kHeader));
        EXPECT_EQ(described.defaultDurationNs, kThreeSecondsNs);
        EXPECT_FALSE(described.lacing.has_value());
        EXPECT_FALSE(described.video.has_value());
        EXPECT_FALSE(described.audio.has_value());
    }
}

TEST(SubtitleCodecTest, TextOfAnySubtypeIsAsciiWithThreeSecondsAndNoPrivateData) {
    MediaTypeValue type = test_support::TextType();
    for (const GUID& subtype : {GUID_NULL, mediasubtype::kUtf8, mediasubtype::kAvc1}) {
        type->subtype = subtype;
        const CodecDescription described = DescribeSubtitleCodec(type.Get());
        EXPECT_EQ(described.codecId, "S_TEXT/ASCII");
        EXPECT_EQ(described.defaultDurationNs, kThreeSecondsNs);
        EXPECT_FALSE(described.codecPrivate.has_value());
        EXPECT_FALSE(described.lacing.has_value());
    }
    // Nor does a format block matter.
    type.SetFormat(FromHex("ffffffffff"));
    EXPECT_EQ(DescribeSubtitleCodec(type.Get()).codecId, "S_TEXT/ASCII");
    EXPECT_EQ(PrivateOf(type), "none");
}

TEST(SubtitleCodecTest, AnOffsetAtTheEndOfTheBlockGivesNoPrivateData) {
    for (const RowCase& row : kRowCases) {
        const MediaTypeValue type = SubtitleType(row.subtype);
        EXPECT_EQ(DescribeSubtitleCodec(type.Get()).codecId, row.codecId);
        EXPECT_EQ(PrivateOf(type), "none") << row.name;
    }
}

TEST(SubtitleCodecTest, WithoutAFormatBlockThereIsNoPrivateData) {
    for (const RowCase& row : kRowCases) {
        SCOPED_TRACE(row.name);
        const MediaTypeValue type = SubtitleType(row.subtype, kHeader).CutTo(0);
        const CodecDescription described = DescribeSubtitleCodec(type.Get());
        EXPECT_EQ(described.codecId, row.codecId);
        EXPECT_EQ(described.defaultDurationNs, kThreeSecondsNs);
        EXPECT_EQ(PrivateOf(type), "none");
    }
}

TEST(SubtitleCodecTest, TheHeaderBeginsWhereTheOffsetSays) {
    MediaTypeValue type = SubtitleType(mediasubtype::kSsa);
    type.SetFormat(FromHex("08000000 656e6700 aabbcc"));
    EXPECT_EQ(PrivateOf(type), "aabbcc");
    type.SetFormat(FromHex("04000000 aabbcc")); // the shortest block that has a header
    EXPECT_EQ(PrivateOf(type), "aabbcc");
    type.SetFormat(FromHex("00000000 aabbcc")); // within the block, so it is taken as it says
    EXPECT_EQ(PrivateOf(type), "00000000aabbcc");
}

TEST(SubtitleCodecTest, AnOffsetOutsideTheBlockIsAnUnsupportedCodec) {
    for (const char* block : {"05000000", "ffffffff", "0b000000 656e6700 aabb"}) {
        MediaTypeValue type = SubtitleType(mediasubtype::kAss);
        type.SetFormat(FromHex(block));
        EXPECT_EQ(DescribeSubtitleCodec(type.Get()).codecId, "") << block;
        EXPECT_EQ(PrivateOf(type), "none");
    }
}

TEST(SubtitleCodecTest, OnlyTheRowWithoutSubtypeLooksAtTheFormatType) {
    MediaTypeValue utf8 = SubtitleType(mediasubtype::kUtf8, kHeader);
    utf8->formattype = GUID_NULL;
    EXPECT_EQ(DescribeSubtitleCodec(utf8.Get()).codecId, "S_TEXT/UTF8");
    MediaTypeValue pgs = SubtitleType(GUID_NULL, kHeader);
    pgs->formattype = GUID_NULL;
    EXPECT_EQ(DescribeSubtitleCodec(pgs.Get()).codecId, "");
}

TEST(SubtitleCodecTest, AnythingElseHasNoMappingButTheDefaultDuration) {
    MediaTypeValue otherMajor = SubtitleType(mediasubtype::kUtf8, kHeader);
    otherMajor->majortype = MEDIATYPE_Video;
    for (const MediaTypeValue& type : {SubtitleType(mediasubtype::kAvc1, kHeader), otherMajor}) {
        const CodecDescription described = DescribeSubtitleCodec(type.Get());
        EXPECT_EQ(described.codecId, "");
        EXPECT_EQ(described.defaultDurationNs, kThreeSecondsNs);
        EXPECT_FALSE(described.codecPrivate.has_value());
    }
}

} // namespace
