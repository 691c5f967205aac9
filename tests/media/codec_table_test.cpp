// Walks all rows of the codec table: each is accepted as it says, maps to its codec, and comes back from the track that
// it became. A new row is judged here without a line more.
#include "media/codec_table.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>

#include "dshow/media_subtypes.h"
#include "media/input_types.h"
#include "media/media_types_of.h"
#include "media/track_type.h"
#include "tests/media/described_track.h"
#include "tests/media/encoder_parameter_sets.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/media_types.h"
#include "tests/support/source_tree.h"

namespace media {
namespace {

using media_test::TextOf;
using test_support::MediaTypeValue;

constexpr GUID kStranger{0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};
constexpr GUID kXvid = SubtypeFromFourCC('X', 'V', 'I', 'D'); // no row names it
constexpr DWORD kProfile = 100;
constexpr DWORD kLevel = 31;
const mkv_test::Bytes kExtra = mkv_test::FromHex("112233445566");
const test_support::VideoShape kSquare{320, 240, 400000, 320, 240}; // every block can say its display size

MediaTypeValue VideoTypeOf(const CodecRow& row) {
    const GUID subtype = row.subtype == nullptr ? kXvid : *row.subtype;
    if (*row.format == FORMAT_MPEGVideo) {
        return test_support::Mpeg1VideoType(kSquare, kExtra);
    }
    if (*row.format == FORMAT_MPEG2Video) {
        const std::vector<mkv_test::Bytes> sets{mkv_test::FromHex(mkv_test::kAvcSps),
                                                mkv_test::FromHex(mkv_test::kAvcPps)};
        const mkv_test::Bytes header =
            row.layout->hasStartCodes ? mkv_test::ByteStream(sets) : mkv_test::LengthPrefixed(sets);
        return test_support::Mpeg2VideoType(subtype, kSquare, header, kProfile, kLevel);
    }
    return *row.format == FORMAT_VideoInfo ? test_support::VideoInfoType(subtype, kSquare)
                                           : test_support::VideoInfo2Type(subtype, kSquare, kExtra);
}

// A media type as splitters offer it for the row's codec.
MediaTypeValue TypeFor(const CodecRow& row) {
    if (*row.major == MEDIATYPE_Video) {
        return VideoTypeOf(row);
    }
    if (*row.major == MEDIATYPE_Audio) {
        return *row.subtype == mediasubtype::kVorbis
                   ? test_support::VorbisType({}, {mkv_test::Bytes{1}, mkv_test::Bytes{2, 3}, mkv_test::Bytes(300, 5)})
                   : test_support::WaveType(*row.subtype, {}, kExtra);
    }
    return *row.major == MEDIATYPE_Text ? test_support::TextType() : test_support::SubtitleType(*row.subtype, kExtra);
}

// The track that the type becomes, as a reader of the file finds it.
TrackFacts TrackFor(const CodecRow& row, const CodecDescription& written) {
    TrackFacts track = media_test::TrackFor(FindTrackType(*row.major), written);
    track.codecId = row.readFrom != nullptr ? row.readFrom : written.codecId;
    return track;
}

// Types without a format block name its absence in two ways.
bool HasFormatOf(const AM_MEDIA_TYPE& type, const AM_MEDIA_TYPE& other) {
    return type.formattype == other.formattype || (type.cbFormat == 0 && other.cbFormat == 0);
}

class CodecTableTest : public testing::TestWithParam<size_t> {
  protected:
    [[nodiscard]] static const CodecRow& Row() { return CodecTable()[GetParam()]; }
    const MediaTypeValue m_type = TypeFor(Row());
};

TEST_P(CodecTableTest, ARowIsOfAKindOfTrackAndItsCodecTellsWhich) {
    const char kind = Row().codecId[0];
    const INT32 trackType = kind == 'V' ? kTrackTypeVideo : kind == 'A' ? kTrackTypeAudio : kTrackTypeSubtitle;
    EXPECT_EQ(FindTrackType(*Row().major), trackType);
    EXPECT_EQ(std::string(Row().codecId).substr(1, 1), "_");
}

TEST_P(CodecTableTest, ARowMapsItsTypeToItsCodec) {
    EXPECT_EQ(CodecIdOf(m_type.Get()), Row().codecId);
    const CodecRow* const first = FindCodecRow(m_type.Get());
    ASSERT_NE(first, nullptr);
    EXPECT_TRUE(first == &Row() || first->subtype == Row().subtype) << "never reached: " << first->codecId;
}

TEST_P(CodecTableTest, ARowIsAcceptedAsItSays) {
    EXPECT_EQ(IsAcceptedInputType(m_type.Get()), Row().acceptance != Acceptance::Refused);
    if (Row().format == nullptr) {
        return;
    }
    MediaTypeValue strange = m_type;
    strange->formattype = kStranger;
    EXPECT_EQ(IsAcceptedInputType(strange.Get()), Row().acceptance == Acceptance::WithAnyFormat);
    EXPECT_EQ(CodecIdOf(strange.Get()), "");
}

TEST_P(CodecTableTest, ARowComesBackFromTheTrackThatItBecame) {
    const CodecDescription written = DescribeCodec(m_type.Get());
    int sameTypes = 0;
    for (const CMediaType& type : MediaTypesOf(TrackFor(Row(), written))) {
        const CodecDescription again = DescribeCodec(type);
        EXPECT_EQ(again.codecId, Row().codecId);
        if (type.subtype == m_type.Get().subtype && HasFormatOf(type, m_type.Get())) {
            EXPECT_EQ(TextOf(again), TextOf(written));
            ++sameTypes;
        }
    }
    EXPECT_EQ(sameTypes, Row().layout->typeOf == nullptr ? 0 : 1);
}

TEST_P(CodecTableTest, TheUsualTypeOfTheTrackKeepsItsPrivateData) {
    const CodecDescription written = DescribeCodec(m_type.Get());
    const std::vector<CMediaType> types = MediaTypesOf(TrackFor(Row(), written));
    ASSERT_FALSE(types.empty());
    EXPECT_EQ(TextOf(DescribeCodec(types.front())), TextOf(written));
}

TEST_P(CodecTableTest, WhatIsAcceptedIsDocumented) {
    std::ifstream file(test_support::TestSourcePath("../docs/codecs.md"));
    std::ostringstream page;
    page << file.rdbuf();
    const bool isDocumented = page.str().find('`' + std::string(Row().codecId) + '`') != std::string::npos;
    EXPECT_EQ(isDocumented, Row().acceptance != Acceptance::Refused);
}

std::string RowName(const testing::TestParamInfo<size_t>& row) {
    std::string name = std::to_string(row.param) + "_" + CodecTable()[row.param].codecId;
    std::replace_if(
        name.begin(), name.end(), [](unsigned char letter) { return std::isalnum(letter) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Rows, CodecTableTest, testing::Range<size_t>(0, CodecTable().size()), RowName);

// Players go by it where they do not know the subtype.
TEST(CodecTable, ASubtypeWithoutAWaveTagGetsThatOfTheCodecsOtherSubtype) {
    const auto tagsOf = [](const char* codecId) {
        TrackFacts track;
        track.type = kTrackTypeAudio;
        track.codecId = codecId;
        std::vector<int> tags;
        for (const CMediaType& type : MediaTypesOf(track)) {
            tags.push_back(FormatBlock(type).Read<WAVEFORMATEX>().value().wFormatTag);
        }
        return tags;
    };
    EXPECT_EQ(tagsOf("A_AC3"), (std::vector{0x2000, 0x2000}));
    EXPECT_EQ(tagsOf("A_DTS"), (std::vector{0x2001, 0x2001}));
    EXPECT_EQ(tagsOf("A_EAC3"), std::vector{0});
    EXPECT_EQ(tagsOf("A_OPUS"), std::vector{0});
    EXPECT_EQ(tagsOf("A_MPEG/L3"), std::vector{0x55});
}

// The files of others name the codec; this writer's own do not.
TEST(CodecTable, RealAudioIsKnownByItsNamesAndByNone) {
    const auto subtypesOf = [](const char* codecId) {
        TrackFacts track;
        track.type = kTrackTypeAudio;
        track.codecId = codecId;
        std::vector<DWORD> tags;
        for (const CMediaType& type : MediaTypesOf(track)) {
            tags.push_back(type.subtype.Data1);
        }
        return tags;
    };
    EXPECT_EQ(subtypesOf("A_REAL/14_4"), std::vector<DWORD>{0x2002});
    EXPECT_EQ(subtypesOf("A_REAL/28_8"), std::vector<DWORD>{0x2003});
    EXPECT_EQ(subtypesOf("A_REAL/COOK"), std::vector<DWORD>{0x2004});
    EXPECT_EQ(subtypesOf("A_REAL/SIPR"), std::vector<DWORD>{0x0130});
    EXPECT_EQ(subtypesOf("A_REAL/ATRC"), std::vector<DWORD>{0x0270});
    EXPECT_EQ(subtypesOf("A_REAL/"), std::vector<DWORD>{0x2004});
}

} // namespace
} // namespace media
