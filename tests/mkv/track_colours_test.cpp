// The Colour elements of strict files: what they are told from, and the place that the first picture fills.
#include "dshow/media_subtypes.h"
#include "records/track_colour.h"
#include "tests/mkv/strict_fixture.h"
#include "tests/support/hex_bytes.h"

namespace {

using namespace test_support::ebml_id;
using test_support::EbmlElement;
using test_support::StreamOperation;

constexpr uint32_t kColour = 0x55b0;
constexpr uint32_t kMatrix = 0x55b1;
constexpr uint32_t kTransfer = 0x55ba;
constexpr uint32_t kPrimaries = 0x55bb;
constexpr uint32_t kMaxCll = 0x55bc;
constexpr uint32_t kMastering = 0x55d0;
constexpr uint32_t kRedX = 0x55d1;
constexpr uint32_t kLuminanceMax = 0x55d9;
constexpr uint32_t kAdditionMapping = 0x41e4;
constexpr uint32_t kAdditionType = 0x41e7;

// Of libx265: BT.2020, PQ, ten bits; its light, and the display; the beginning of a key picture.
const char* const kVps = "40010c01ffff02200000030090000003000003001e959409";
const char* const kSps = "42010102200000030090000003000003001ea02083136595952930bc05a848804db080000003008000000c84";
const char* const kPps = "4401c073c089";
const char* const kLight = "4e01900403e8019080";
const char* const kDisplay = "4e01891833c286c41d4c0bb884d03e803d13404200989680000003003280";
const char* const kPicture = "2801ac76a10f";

class TrackColoursTest : public StrictTest {
  protected:
    static Bytes Stream(std::initializer_list<const char*> units) {
        std::vector<mkv_test::Bytes> list;
        for (const char* const unit : units) {
            list.push_back(mkv_test::FromHex(unit));
        }
        return mkv_test::ByteStream(list);
    }
    static test_support::MediaTypeValue HdrType(std::initializer_list<const char*> header = {kVps, kSps, kPps}) {
        return test_support::Mpeg2VideoType(mediasubtype::kHevcAnnexB, {}, Stream(header));
    }
    void RegisterTold(const test_support::MediaTypeValue& type, const MuxTrackColour& colour) {
        m_writer.registerTrack(type.Get(), Row().Get(), records::UnsetTrackFlags(0), colour);
    }
    void WriteHdrPicture() { Write(0, 0, 40 * kMs, true, Stream({kLight, kDisplay, kPicture})); }

    [[nodiscard]] const EbmlElement* InVideo(std::initializer_list<uint32_t> path) {
        const EbmlElement* element = Element({kTracks, kTrackEntry, kVideo});
        for (const uint32_t id : path) {
            element = element == nullptr ? nullptr : element->Child(id);
        }
        return element;
    }
    std::optional<uint64_t> Number(uint32_t id) {
        const EbmlElement* const child = InVideo({kColour, id});
        return child == nullptr ? std::nullopt : test_support::UnsignedOf(File().file, *child);
    }
    std::optional<double> Measure(uint32_t id) {
        const EbmlElement* const child = InVideo({kColour, kMastering, id});
        return child == nullptr ? std::nullopt : test_support::FloatOf(File().file, *child);
    }
};

TEST_F(TrackColoursTest, TheFirstPictureFillsThePlaceThatIsKept) {
    Register(HdrType());
    OpenStrict();
    const Layout open = Snapshot();
    const EbmlElement* const video = open.Segment()->Child(kTracks)->Child(kTrackEntry)->Child(kVideo);
    ASSERT_NE(video, nullptr);
    EXPECT_EQ(video->Child(kColour), nullptr);
    ASSERT_NE(video->Child(kVoid), nullptr);
    EXPECT_EQ(video->Child(kVoid)->End() - video->Child(kVoid)->offset, 192u);
    WriteHdrPicture();
    EXPECT_EQ(Number(kPrimaries), 9u);
    EXPECT_EQ(Number(kTransfer), 16u);
    EXPECT_EQ(Number(kMatrix), 9u);
    EXPECT_EQ(Number(kMaxCll), 1000u);
    EXPECT_EQ(Measure(kRedX), 0.68); // not rounded to four bytes
    EXPECT_EQ(Measure(kLuminanceMax), 1000.0);
}

TEST_F(TrackColoursTest, ThePlaceIsFilledAtOnce) {
    Register(HdrType());
    OpenStrict();
    WriteHdrPicture();
    const Layout open = Snapshot();
    EXPECT_NE(open.Segment()->Child(kTracks)->Child(kTrackEntry)->Child(kVideo)->Child(kColour), nullptr);
}

TEST_F(TrackColoursTest, TheFirstKeyPictureCountsAlone) {
    Register(HdrType());
    OpenStrict();
    Write(0, 0, 40 * kMs, false, Stream({kLight, kPicture}));
    Write(0, 40 * kMs, 80 * kMs, true, Stream({kPicture}));
    Write(0, 80 * kMs, 120 * kMs, true, Stream({kLight, kPicture}));
    EXPECT_EQ(Number(kPrimaries), 9u);
    EXPECT_EQ(Number(kMaxCll), std::nullopt);
}

TEST_F(TrackColoursTest, WhatTheHeaderTellsWholeNeedsNoPlace) {
    Register(HdrType({kVps, kSps, kPps, kLight, kDisplay}));
    OpenStrict();
    Write(0, 0, 40 * kMs, true, Stream({kPicture}));
    EXPECT_EQ(InVideo({kVoid}), nullptr);
    EXPECT_EQ(Number(kMaxCll), 1000u);
    EXPECT_EQ(Measure(kLuminanceMax), 1000.0);
}

TEST_F(TrackColoursTest, ATrackThatTellsNothingHasNoElement) {
    RegisterVideo();
    OpenStrict();
    Write(0, 0, 40 * kMs, true);
    EXPECT_EQ(InVideo({kColour}), nullptr);
    EXPECT_EQ(InVideo({kVoid}), nullptr);
}

TEST_F(TrackColoursTest, WhatIsToldCountsBeforeTheStream) {
    MuxTrackColour colour = records::UntoldColour(0);
    colour.primaries = 1;
    colour.maxContentLight = 77;
    colour.redX = 0.5;
    colour.transferCharacteristics = 200; // which is none
    RegisterTold(HdrType(), colour);
    OpenStrict();
    WriteHdrPicture();
    EXPECT_EQ(Number(kPrimaries), 1u);
    EXPECT_EQ(Number(kTransfer), 16u);
    EXPECT_EQ(Number(kMaxCll), 77u);
    EXPECT_EQ(Measure(kRedX), 0.5);
    EXPECT_EQ(Measure(kLuminanceMax), 1000.0);
}

TEST_F(TrackColoursTest, AllOfARecordFitsThePlace) {
    MuxTrackColour colour = records::UntoldColour(0);
    for (INT32 MuxTrackColour::*const number : records::kColourNumbers) {
        colour.*number = 1;
    }
    colour.maxContentLight = colour.maxFrameAverageLight = 0x7fffffff;
    for (double MuxTrackColour::*const measure : records::kColourMastering) {
        colour.*measure = 0.3;
    }
    RegisterTold(HdrType({}), colour);
    OpenStrict();
    Write(0, 0, 40 * kMs, true, Stream({kVps, kSps, kPps, kPicture}));
    ASSERT_NE(InVideo({kColour}), nullptr);
    EXPECT_EQ(InVideo({kColour})->children.size(), records::kColourNumbers.size() + 1);
    EXPECT_EQ(InVideo({kColour, kMastering})->children.size(), records::kColourMastering.size());
}

TEST_F(TrackColoursTest, AWriteThatIsLostIsMadeAgainAtTheEnd) {
    Register(HdrType());
    OpenStrict();
    m_stream.FailNth(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    WriteHdrPicture();
    EXPECT_EQ(Number(kMaxCll), 1000u);
}

TEST_F(TrackColoursTest, DolbyVisionGetsTheMappingOfItsProfile) {
    const std::pair<BYTE, uint64_t> profiles[] = {{5, 0x64766343}, {7, 0x64766343}, {8, 0x64767643}};
    for (const auto& [profile, type] : profiles) {
        MuxTrackColour colour = records::UntoldColour(0);
        colour.dolbyVision[0] = 1;
        colour.dolbyVision[2] = static_cast<BYTE>(profile << 1);
        RegisterTold(CinepakType(), colour);
        OpenStrict();
        const Layout open = Snapshot();
        const EbmlElement* const mapping = open.Segment()->Child(kTracks)->Child(kTrackEntry)->Child(kAdditionMapping);
        ASSERT_NE(mapping, nullptr);
        EXPECT_EQ(test_support::UnsignedOf(open.file, *mapping->Child(kAdditionType)), type);
        Finish();
    }
}

TEST_F(TrackColoursTest, ACompatibleFileTellsNothing) {
    MuxTrackColour colour = records::UntoldColour(0);
    colour.primaries = 1;
    colour.dolbyVision[0] = 1;
    RegisterTold(HdrType(), colour);
    Open();
    WriteHdrPicture();
    EXPECT_EQ(InVideo({kColour}), nullptr);
    EXPECT_EQ(InVideo({kVoid}), nullptr);
    EXPECT_EQ(Element({kTracks, kTrackEntry, kAdditionMapping}), nullptr);
}

} // namespace
