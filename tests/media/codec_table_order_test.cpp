// That the first row that matches wins, for every format and subtype at once: each combination of the tables' keys
// has the one codec that the documented order gives it.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "tests/support/media_types.h"

namespace {

using test_support::MediaTypeValue;

enum Format { Mpeg1, Mpeg2, VideoInfo, VideoInfo2 };

struct NamedSubtype {
    const char* name;
    GUID guid;
};

const NamedSubtype kSubtypes[] = {
    {"MPEG1Payload", MEDIASUBTYPE_MPEG1Payload},
    {"THEO", SubtypeFromFourCC('T', 'H', 'E', 'O')},
    {"MPEG2_VIDEO", MEDIASUBTYPE_MPEG2_VIDEO},
    {"MP4V", SubtypeFromFourCC('M', 'P', '4', 'V')},
    {"AVC1", SubtypeFromFourCC('A', 'V', 'C', '1')},
    {"H.264 byte stream", mediasubtype::kH264AnnexB},
    {"HVC1", SubtypeFromFourCC('H', 'V', 'C', '1')},
    {"HEVC", SubtypeFromFourCC('H', 'E', 'V', 'C')},
    {"VP80", SubtypeFromFourCC('V', 'P', '8', '0')},
    {"VP90", SubtypeFromFourCC('V', 'P', '9', '0')},
    {"other", SubtypeFromFourCC('X', 'V', 'I', 'D')},
    // FourCCs are taken as they are written: lower case is another codec.
    {"avc1", SubtypeFromFourCC('a', 'v', 'c', '1')},
    {"vp80", SubtypeFromFourCC('v', 'p', '8', '0')},
};

// All that is not a VFW track (with a VIDEOINFO block) or unsupported (with an MPEG block).
const std::map<std::pair<Format, std::string>, const char*> kOwnRows = {
    {{Mpeg1, "MPEG1Payload"}, "V_MPEG1"},  {{Mpeg2, "THEO"}, "V_THEORA"},
    {{Mpeg2, "MPEG2_VIDEO"}, "V_MPEG2"},   {{Mpeg2, "MP4V"}, "V_MPEG4/ISO/ASP"},
    {{Mpeg2, "AVC1"}, "V_MPEG4/ISO/AVC"},  {{Mpeg2, "H.264 byte stream"}, "V_MPEG4/ISO/AVC"},
    {{Mpeg2, "HVC1"}, "V_MPEGH/ISO/HEVC"}, {{Mpeg2, "HEVC"}, "V_MPEGH/ISO/HEVC"},
    {{VideoInfo, "VP80"}, "V_VP8"},        {{VideoInfo2, "VP90"}, "V_VP9"},
};

MediaTypeValue TypeOf(Format format, const GUID& subtype) {
    switch (format) {
    case Mpeg1: {
        MediaTypeValue type = test_support::Mpeg1VideoType({}, {});
        type->subtype = subtype;
        return type;
    }
    case Mpeg2:
        return test_support::Mpeg2VideoType(subtype, {}, {});
    case VideoInfo:
        return test_support::VideoInfoType(subtype);
    default:
        return test_support::VideoInfo2Type(subtype);
    }
}

TEST(VideoCodecTableTest, EveryFormatWithEverySubtypeHasTheCodecOfTheFirstRowThatMatches) {
    for (const Format format : {Mpeg1, Mpeg2, VideoInfo, VideoInfo2}) {
        const bool hasVfw = format == VideoInfo || format == VideoInfo2;
        for (const NamedSubtype& subtype : kSubtypes) {
            const auto own = kOwnRows.find({format, subtype.name});
            const std::string expected = own != kOwnRows.end() ? own->second : hasVfw ? "V_MS/VFW/FOURCC" : "";
            EXPECT_EQ(media::CodecIdOf(TypeOf(format, subtype.guid).Get()), expected)
                << "format " << format << ", " << subtype.name;
        }
    }
}

TEST(VideoCodecTableTest, SubtypesAreTheTemplateWithTheirFourCC) {
    EXPECT_EQ(mediasubtype::kAvc1.Data1, 0x31435641u);
    EXPECT_EQ(mediasubtype::kHevcAnnexB.Data1, 0x43564548u);
    const GUID expected{0x30395056, 0, 0x10, {0x80, 0, 0, 0xaa, 0, 0x38, 0x9b, 0x71}};
    EXPECT_TRUE(mediasubtype::kVp9 == expected);
}

} // namespace
