// IVF files and streams of AV1 units as packets, also damaged ones.
#include "sources/av1/av1_source.h"

#include <gmock/gmock.h>

#include <string>

#include "dshow/media_subtypes.h"
#include "media/codec_description.h"
#include "sources/av1/ivf_header.h"
#include "sources/av1/temporal_units.h"
#include "tests/sources/base/memory_source.h"
#include "tests/sources/base/packet_checks.h"
#include "tests/support/hex_bytes.h"

namespace {

using mkv_test::FromHex;
using mkv_test::ToHex;
using test_source::Bytes;
using test_source::MemorySource;
using testing::ElementsAre;

constexpr const char* kHeader = "0a0a0000000337f8e6d7c802"; // 128x72
constexpr const char* kRecord = "81000c000a0a0000000337f8e6d7c802";
const Bytes kKeyUnit = FromHex("1200 0a0a0000000337f8e6d7c802 3203100102");
const Bytes kInterUnit = FromHex("1200 32023003");

Bytes Joined(const std::vector<Bytes>& parts) {
    Bytes bytes;
    for (const Bytes& part : parts) {
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
    return bytes;
}

void AppendNumber(Bytes& bytes, UINT64 value, size_t size) {
    for (size_t i = 0; i < size; ++i, value >>= 8) {
        bytes.push_back(static_cast<BYTE>(value));
    }
}

struct Frame {
    UINT64 ticks;
    Bytes data;
};

Bytes Ivf(const std::string& codec, UINT32 rate, UINT32 scale, const std::vector<Frame>& frames) {
    Bytes bytes{'D', 'K', 'I', 'F', 0, 0, 32, 0};
    bytes.insert(bytes.end(), codec.begin(), codec.end());
    AppendNumber(bytes, 128, 2);
    AppendNumber(bytes, 72, 2);
    AppendNumber(bytes, rate, 4);
    AppendNumber(bytes, scale, 4);
    AppendNumber(bytes, frames.size(), 8);
    for (const Frame& frame : frames) {
        AppendNumber(bytes, frame.data.size(), 4);
        AppendNumber(bytes, frame.ticks, 8);
        bytes.insert(bytes.end(), frame.data.begin(), frame.data.end());
    }
    return bytes;
}

std::unique_ptr<source::PacketReader> IvfReader(const Bytes& bytes) {
    return av1::MakeIvfReader(std::make_unique<MemorySource>(bytes));
}

std::unique_ptr<source::PacketReader> ObuReader(const Bytes& bytes) {
    return av1::MakeObuReader(std::make_unique<MemorySource>(bytes), {50, 1});
}

// "0-40 key": milliseconds.
std::vector<std::string> Told(source::PacketReader& reader) {
    std::vector<std::string> told;
    for (const source::Packet& packet : test_source::ReadAll(reader)) {
        told.push_back(std::to_string(packet.start / 10000) + "-" + std::to_string(packet.stop / 10000) +
                       (packet.keyframe ? " key" : ""));
    }
    return told;
}

std::string PrivateOf(const source::PacketReader& reader) {
    const auto described = media::DescribeStrictCodec(reader.Streams().at(0).types.at(0));
    return described.codecId + " " + (described.codecPrivate ? ToHex(*described.codecPrivate) : "none");
}

// ---- IVF -----------------------------------------------------------------------------------------------------------

TEST(IvfReaderTest, Av1HasItsRecordItsTimesAndItsKeyframes) {
    const auto reader = IvfReader(Ivf("AV01", 25, 1, {{0, kKeyUnit}, {1, kInterUnit}, {3, kKeyUnit}}));
    ASSERT_TRUE(reader);
    EXPECT_EQ(PrivateOf(*reader), std::string("V_AV1 ") + kRecord);
    EXPECT_THAT(Told(*reader), ElementsAre("0-40 key", "40-120", "120-200 key"));
    EXPECT_EQ(reader->Damage(), S_OK);
    EXPECT_THAT(Told(*reader), ElementsAre("0-40 key", "40-120", "120-200 key")) << "a second time";
    const auto* const info = reinterpret_cast<const VIDEOINFOHEADER2*>(reader->Streams()[0].types[0].pbFormat);
    EXPECT_EQ(info->bmiHeader.biWidth, 128);
    EXPECT_EQ(info->bmiHeader.biHeight, 72);
    EXPECT_EQ(info->AvgTimePerFrame, 400000);
}

TEST(IvfReaderTest, TicksThatAreNoFramesTellNoFrameDuration) {
    const auto reader = IvfReader(Ivf("AV01", 1000, 1, {{0, kKeyUnit}, {33, kInterUnit}}));
    ASSERT_TRUE(reader);
    EXPECT_EQ(reinterpret_cast<const VIDEOINFOHEADER2*>(reader->Streams()[0].types[0].pbFormat)->AvgTimePerFrame, 0);
    EXPECT_THAT(Told(*reader), ElementsAre("0-33 key", "33-66"));
}

TEST(IvfReaderTest, Vp8AndVp9TellTheirKeyframes) {
    const auto vp8 = IvfReader(Ivf("VP80", 25, 1, {{0, {0x10, 1}}, {1, {0x11, 1}}}));
    ASSERT_TRUE(vp8);
    EXPECT_EQ(PrivateOf(*vp8), "V_VP8 none");
    EXPECT_THAT(Told(*vp8), ElementsAre("0-40 key", "40-80"));
    const auto vp9 = IvfReader(Ivf("VP90", 25, 1, {{0, {0x82, 1}}, {1, {0x86, 1}}, {2, {0x88, 1}}, {3, {0xb1, 1}}}));
    ASSERT_TRUE(vp9);
    EXPECT_EQ(PrivateOf(*vp9), "V_VP9 none");
    EXPECT_THAT(Told(*vp9), ElementsAre("0-40 key", "40-80", "80-120", "120-160 key"))
        << "a key frame, another, one that exists, a key frame of the last profile";
}

TEST(IvfReaderTest, OtherCodecsAndNonsenseAreRefused) {
    EXPECT_FALSE(IvfReader(Ivf("H264", 25, 1, {})));
    EXPECT_FALSE(IvfReader(Ivf("AV01", 0, 1, {})));
    EXPECT_FALSE(IvfReader(Ivf("AV01", 25, 0, {})));
    EXPECT_FALSE(IvfReader({}));
    Bytes shortHead = Ivf("AV01", 25, 1, {});
    shortHead[6] = 31;
    EXPECT_FALSE(IvfReader(shortHead));
}

TEST(IvfReaderTest, ALongerHeadIsSkipped) {
    Bytes bytes = Ivf("VP80", 25, 1, {{0, {0x10, 1}}});
    bytes[6] = 34;
    bytes.insert(bytes.begin() + 32, 2, BYTE{0});
    const auto reader = IvfReader(bytes);
    ASSERT_TRUE(reader);
    EXPECT_THAT(Told(*reader), ElementsAre("0-40 key"));
}

TEST(IvfReaderTest, AFrameThatIsCutOffOrEmptyIsDamage) {
    Bytes bytes = Ivf("AV01", 25, 1, {{0, kKeyUnit}, {1, {}}, {2, kInterUnit}, {3, kInterUnit}});
    bytes.pop_back();
    const auto reader = IvfReader(bytes);
    ASSERT_TRUE(reader);
    EXPECT_THAT(Told(*reader), ElementsAre("0-40 key", "80-120"));
    EXPECT_TRUE(FAILED(reader->Damage()));
}

TEST(IvfReaderTest, TimesBeyondAllMeasureAreLost) {
    av1::IvfHeader header;
    header.rate = 30000;
    header.scale = 1001;
    EXPECT_EQ(header.TimeOf(30000), 10'010'000'000);
    EXPECT_EQ(header.TimeOf(UINT64_MAX), source::kMaxTime + 1);
    EXPECT_EQ(header.TimeOf(UINT64_MAX / 1001), source::kMaxTime + 1);
    const auto reader = IvfReader(Ivf("AV01", 25, 1, {{0, kKeyUnit}, {UINT64_MAX, kInterUnit}}));
    ASSERT_TRUE(reader);
    EXPECT_EQ(test_source::ReadAll(*reader).size(), 1u);
    EXPECT_TRUE(FAILED(reader->Damage()));
}

// ---- Streams of units ----------------------------------------------------------------------------------------------

TEST(ObuReaderTest, EachTemporalUnitIsAPacket) {
    const auto reader = ObuReader(Joined({kKeyUnit, kInterUnit, kInterUnit, kKeyUnit}));
    ASSERT_TRUE(reader);
    EXPECT_EQ(PrivateOf(*reader), std::string("V_AV1 ") + kRecord);
    EXPECT_THAT(Told(*reader), ElementsAre("0-20 key", "20-40", "40-60", "60-80 key"));
    EXPECT_EQ(reader->Damage(), S_OK);
    const auto packets = test_source::ReadAll(*reader);
    EXPECT_EQ(packets.at(1).data, kInterUnit);
    const auto* const info = reinterpret_cast<const VIDEOINFOHEADER2*>(reader->Streams()[0].types[0].pbFormat);
    EXPECT_EQ(info->bmiHeader.biWidth, 128);
    EXPECT_EQ(info->AvgTimePerFrame, 200000);
}

TEST(ObuReaderTest, LengthsBecomeSizes) {
    // Temporal unit, frame, unit: the delimiter without a size, header and frame likewise.
    const Bytes key = FromHex("14 13 01 10 0b 08 0000000337f8e6d7c802 04 30100102");
    const Bytes inter = FromHex("07 06 01 10 03 303003");
    const auto reader = ObuReader(Joined({key, inter}));
    ASSERT_TRUE(reader);
    EXPECT_EQ(PrivateOf(*reader), std::string("V_AV1 ") + kRecord);
    EXPECT_THAT(Told(*reader), ElementsAre("0-20 key", "20-40"));
    const auto packets = test_source::ReadAll(*reader);
    EXPECT_EQ(packets.at(0).data, kKeyUnit);
    EXPECT_EQ(packets.at(1).data, kInterUnit);
    const auto wrong = ObuReader(Joined({key, FromHex("07 06 01 10 04 303003")}));
    ASSERT_TRUE(wrong);
    EXPECT_THAT(Told(*wrong), ElementsAre("0-20 key"));
    EXPECT_TRUE(FAILED(wrong->Damage()));
}

TEST(ObuReaderTest, WhatDoesNotBeginWithAHeaderIsRefused) {
    EXPECT_FALSE(ObuReader({}));
    EXPECT_FALSE(ObuReader(Joined({kInterUnit, kKeyUnit})));
    EXPECT_FALSE(ObuReader(FromHex(kHeader)));
    EXPECT_FALSE(ObuReader(Bytes(1000)));
    EXPECT_FALSE(ObuReader(Bytes(1000, 0xff)));
}

TEST(ObuReaderTest, ReadingEndsAtDamageAndTellsIt) {
    const auto reader = ObuReader(Joined({kKeyUnit, kInterUnit, FromHex("1200 32ff7f00"), kKeyUnit}));
    ASSERT_TRUE(reader);
    EXPECT_THAT(Told(*reader), ElementsAre("0-20 key", "20-40"));
    EXPECT_TRUE(FAILED(reader->Damage()));
}

// ---- Whatever the input --------------------------------------------------------------------------------------------

TEST(Av1SourceTest, DamagedFilesNeverHarm) {
    std::vector<Frame> frames;
    std::vector<Bytes> units;
    for (UINT64 i = 0; i < 40; ++i) {
        frames.push_back({i, i % 10 == 0 ? kKeyUnit : kInterUnit});
        units.push_back(frames.back().data);
    }
    const Bytes ivf = Ivf("AV01", 25, 1, frames);
    test_source::CheckTruncations(IvfReader, ivf, false);
    test_source::CheckBitFlips(IvfReader, ivf);
    test_source::CheckTruncations(ObuReader, Joined(units), false);
    test_source::CheckBitFlips(ObuReader, Joined(units));
}

} // namespace
