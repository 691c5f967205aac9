// Walks the rows that strict files alone have: each maps its type in strict files, leaves compatible files as they are,
// and comes back from the track that it became. A new row is judged here without a line more.
#include "media/strict_codec_table.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "media/input_types.h"
#include "media/media_types_of.h"
#include "media/track_type.h"
#include "tests/media/described_track.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"
#include "tests/support/source_tree.h"

namespace media {
namespace {

using media_test::TextOf;
using test_support::MediaTypeValue;

const test_support::VideoShape kSquare{320, 240, 400000, 320, 240};
const test_support::VideoShape kWide{320, 240, 400000, 16, 9};

// What follows the structure; for some codecs not anything.
mkv_test::Bytes ExtraOf(const CodecRow& row) {
    static const std::map<std::string, const char*> kExtras{
        {"A_ALAC", "00001000 00 10 28 0a 0e 02 00ff 00000000 00000000 0000bb80"}, // of 16 bits, stereo, 48 kHz
        {"S_TEXT/WEBVTT", "574542565454"},
        {"S_DVBSUB", "0001000210"},
    };
    const auto found = kExtras.find(row.codecId);
    return mkv_test::FromHex(found == kExtras.end() ? "112233445566" : found->second);
}

// A media type as splitters offer it for the row's codec.
MediaTypeValue TypeFor(const CodecRow& row) {
    const mkv_test::Bytes extra = ExtraOf(row);
    if (*row.major == MEDIATYPE_Video) {
        // Tracks of VP8 come back in the block that compatible files want, which has no shape.
        const bool hasShape = std::string(row.codecId) != "V_VP8";
        return *row.format == FORMAT_VideoInfo
                   ? test_support::VideoInfoType(*row.subtype, kSquare, extra)
                   : test_support::VideoInfo2Type(*row.subtype, hasShape ? kWide : kSquare, extra);
    }
    return *row.major == MEDIATYPE_Audio ? test_support::WaveType(*row.subtype, {}, extra)
                                         : test_support::SubtitleType(*row.subtype, extra);
}

class StrictCodecTableTest : public testing::TestWithParam<size_t> {
  protected:
    [[nodiscard]] static const CodecRow& Row() { return StrictCodecTable()[GetParam()]; }
    [[nodiscard]] static bool IsVideo() { return *Row().major == MEDIATYPE_Video; }
    const MediaTypeValue m_type = TypeFor(Row());
};

TEST_P(StrictCodecTableTest, ARowMapsItsTypeInStrictFilesAlone) {
    EXPECT_EQ(FindStrictCodecRow(m_type.Get()), &Row());
    EXPECT_EQ(StrictCodecIdOf(m_type.Get()), Row().codecId);
    EXPECT_EQ(CodecIdOf(m_type.Get()), IsVideo() ? "V_MS/VFW/FOURCC" : "");
}

TEST_P(StrictCodecTableTest, AnInputOfACompatibleFileTakesWhatItAlwaysTook) {
    EXPECT_TRUE(IsAcceptedStrictInputType(m_type.Get()));
    EXPECT_EQ(IsAcceptedInputType(m_type.Get()), IsVideo());
}

TEST_P(StrictCodecTableTest, TheTrackComesBackAsItWas) {
    const CodecDescription written = DescribeStrictCodec(m_type.Get());
    const auto types = MediaTypesOf(media_test::TrackFor(FindTrackType(*Row().major), written));
    ASSERT_FALSE(types.empty());
    for (const CMediaType& type : types) {
        EXPECT_EQ(TextOf(DescribeStrictCodec(type)), TextOf(written));
    }
}

// Where compatible files have the codec in another way, nothing of it is lost there either.
TEST_P(StrictCodecTableTest, TheTrackGoesIntoACompatibleFileWithAllThatItHas) {
    const CodecDescription written = DescribeStrictCodec(m_type.Get());
    const auto types = MediaTypesOf(media_test::TrackFor(FindTrackType(*Row().major), written));
    ASSERT_FALSE(types.empty());
    const CodecDescription compatible = DescribeCodec(types.front());
    if (compatible.codecId != "V_MS/VFW/FOURCC") {
        return;
    }
    const bool hasExtra = written.codecId == "V_FFV1"; // others have none, or the FourCC alone
    EXPECT_EQ(mkv_test::ToHex(*compatible.codecPrivate).substr(2 * sizeof(BITMAPINFOHEADER)),
              hasExtra ? mkv_test::ToHex(*written.codecPrivate) : "");
    const auto* const bitmap = reinterpret_cast<const BITMAPINFOHEADER*>(compatible.codecPrivate->data());
    EXPECT_EQ(bitmap->biCompression, types.front().subtype.Data1);
    EXPECT_EQ(compatible.video->pixelHeight, written.video->pixelHeight);
}

TEST_P(StrictCodecTableTest, WhatStrictFilesHoldIsDocumented) {
    std::ifstream file(test_support::TestSourcePath("../docs/codecs.md"));
    std::ostringstream page;
    page << file.rdbuf();
    EXPECT_NE(page.str().find('`' + std::string(Row().codecId) + '`'), std::string::npos);
}

std::string RowName(const testing::TestParamInfo<size_t>& row) {
    std::string name = std::to_string(row.param) + "_" + StrictCodecTable()[row.param].codecId;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char letter) { return std::isalnum(letter) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Rows, StrictCodecTableTest, testing::Range<size_t>(0, StrictCodecTable().size()), RowName);

} // namespace
} // namespace media
