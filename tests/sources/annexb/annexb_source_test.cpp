#include <gmock/gmock.h>

#include "media/codec_description.h"
#include "sources/annexb/annexb_reader.h"
#include "sources/annexb/unit_scanner.h"
#include "sources/base/buffered_source.h"
#include "tests/codecs/stream_writer.h"
#include "tests/sources/base/memory_source.h"
#include "tests/sources/base/packet_checks.h"

namespace annexb {
namespace {

using namespace test_annexb;
using test_source::MemorySource;
using testing::ElementsAre;

using test_annexb::Bytes;

std::vector<std::string> UnitsOf(const std::string& bytes) {
    const MemorySource source(bytes);
    UnitScanner scanner(source, 0, source.Size());
    std::vector<std::string> units;
    while (const std::optional<UnitExtent> unit = scanner.Next()) {
        units.push_back(bytes.substr(static_cast<size_t>(unit->start), static_cast<size_t>(unit->Size())));
    }
    return units;
}

TEST(UnitScanner, TakesStartCodesOfBothLengthsAndTheZerosAroundThem) {
    const auto text = [](const char* bytes, size_t size) { return std::string(bytes, size); };
    EXPECT_THAT(UnitsOf(text("\0\0\0\1ab\0\0\1cd\0\0\0\0\0\1e\0\0", 21)), ElementsAre("ab", "cd", "e"));
    EXPECT_THAT(UnitsOf(text("junk\0\0\1a\0\1b", 11)), ElementsAre(text("a\0\1b", 4)));
    EXPECT_THAT(UnitsOf(text("\0\0\1\0\0\1a", 7)), ElementsAre("a"));
    EXPECT_THAT(UnitsOf("no start code"), ElementsAre());
    EXPECT_THAT(UnitsOf(""), ElementsAre());
}

TEST(UnitScanner, StartCodesMayLieAcrossItsWindows) {
    for (const size_t window : {size_t{64} << 10, size_t{512} << 10}) {
        for (size_t size = window - 8; size < window + 8; ++size) {
            const std::string unit(size, 'x');
            EXPECT_THAT(UnitsOf(std::string("\0\0\1", 3) + unit + std::string("\0\0\0\1y", 5)), ElementsAre(unit, "y"));
        }
    }
}

// Byte by byte.
std::vector<std::string> UnitsOfSlowly(const std::string& bytes) {
    std::vector<std::string> units;
    std::optional<size_t> start;
    size_t zeros = 0;
    const auto add = [&](size_t end) {
        if (start && end > *start) {
            units.push_back(bytes.substr(*start, end - *start));
        }
    };
    for (size_t i = 0; i < bytes.size(); ++i) {
        if (bytes[i] == 1 && zeros >= 2) {
            add(i - zeros);
            start = i + 1;
        }
        zeros = bytes[i] == 0 ? zeros + 1 : 0;
    }
    add(bytes.size() - zeros);
    return units;
}

TEST(UnitScanner, FindsTheSameUnitsAsALookAtEveryByteInAFileAndInMemory) {
    UINT32 seed = 1;
    for (int round = 0; round < 300; ++round) {
        std::string bytes(static_cast<size_t>(round), '\0');
        for (char& byte : bytes) {
            seed = seed * 1664525 + 1013904223;
            byte = static_cast<char>(seed >> 28 < 8 ? 0 : seed >> 28 & 3);
        }
        const std::vector<std::string> expected = UnitsOfSlowly(bytes);
        ASSERT_EQ(UnitsOf(bytes), expected);
        std::vector<std::string> units;
        const std::vector<BYTE> memory(bytes.begin(), bytes.end());
        UnitScanner scanner(memory);
        while (const std::optional<UnitExtent> unit = scanner.Next()) {
            units.push_back(bytes.substr(static_cast<size_t>(unit->start), static_cast<size_t>(unit->Size())));
        }
        ASSERT_EQ(units, expected);
    }
}

TEST(UnitScanner, ShowsTheHeadOfAUnitWhetherItsWindowHoldsItOrNot) {
    const std::string large = "head" + std::string(size_t{1200} << 10, 'x');
    const MemorySource source(std::string("\0\0\1abc\0\0\1", 9) + large + std::string("\0\0\1last", 7));
    UnitScanner scanner(source, 0, source.Size());
    for (const std::string& unit : {std::string("abc"), large, std::string("last")}) {
        const std::optional<UnitExtent> found = scanner.Next();
        ASSERT_TRUE(found);
        const codecs::ByteView head = scanner.HeadOf(*found, 4);
        EXPECT_EQ(std::string(head.begin(), head.end()), unit.substr(0, 4));
        const codecs::ByteView whole = scanner.HeadOf(*found, SIZE_MAX);
        EXPECT_TRUE(std::equal(whole.begin(), whole.end(), unit.begin(), unit.end(),
                               [](BYTE a, char b) { return a == static_cast<BYTE>(b); }));
    }
    EXPECT_FALSE(scanner.Next());
}

// Where each picture is shown, in the order of decoding; a star for keyframes.
std::vector<std::string> Shown(const PictureIndex& index) {
    std::vector<std::string> texts;
    for (const CodedPicture& picture : index.pictures) {
        texts.push_back(std::to_string(picture.shown) + (picture.keyframe ? "*" : ""));
    }
    return texts;
}

PictureIndex Avc(std::initializer_list<Bytes> units) {
    return IndexAvc(MemorySource(Joined(units)));
}

PictureIndex Hevc(std::initializer_list<Bytes> units) {
    return IndexHevc(MemorySource(Joined(units)));
}

AvcSliceShape Idr() {
    AvcSliceShape slice;
    slice.isIdr = true;
    return slice;
}

AvcSliceShape P(UINT32 frameNum, UINT32 pocLsb) {
    AvcSliceShape slice;
    slice.type = 5;
    slice.frameNum = frameNum;
    slice.pocLsb = pocLsb;
    return slice;
}

AvcSliceShape B(UINT32 frameNum, UINT32 pocLsb) {
    AvcSliceShape slice = P(frameNum, pocLsb);
    slice.type = 6;
    slice.isReference = false;
    return slice;
}

TEST(AvcIndexer, SlicesOfOnePictureStayTogether) {
    AvcSliceShape second = Idr();
    second.firstMb = 150;
    const PictureIndex index =
        Avc({WriteAvcSps(), WriteAvcPps(), WriteAvcSlice(Idr()), WriteAvcSlice(second), WriteAvcSlice(P(1, 2))});
    EXPECT_THAT(Shown(index), ElementsAre("0*", "1"));
    EXPECT_FALSE(index.isDamaged);
    EXPECT_EQ(index.shape.width, 320u);
    EXPECT_EQ(index.shape.height, 240u);
    EXPECT_EQ(index.profile, 77);
    EXPECT_EQ(index.level, 30);
}

TEST(AvcIndexer, PrefixesInFrontOfEachSliceKeepAPictureTogether) {
    AvcSliceShape second = Idr();
    second.firstMb = 150;
    const Bytes prefix = Unit({0x6e}, mkv_test::BitWriter().Bits(0x400007, 24)); // of a scalable or multiview stream
    const Bytes first =
        Joined({WriteAvcSps(), WriteAvcPps(), prefix, WriteAvcSlice(Idr()), prefix, WriteAvcSlice(second)});
    const PictureIndex index = Avc({first, prefix, WriteAvcSlice(P(1, 2))});
    EXPECT_THAT(Shown(index), ElementsAre("0*", "1"));
    EXPECT_EQ(index.pictures[0].end, first.size());
    EXPECT_EQ(index.pictures[1].start, first.size() + 1) << "its own prefix belongs to it";
}

TEST(AvcIndexer, DelimitersParameterSetsAndMessagesBeginThePictureBehindThem) {
    const Bytes lead = Joined({WriteAvcDelimiter(), WriteAvcSps(), WriteAvcPps(), WriteAvcRecoveryPoint(0)});
    const Bytes first = Joined({lead, WriteAvcSlice(Idr())});
    const PictureIndex index = Avc({first, WriteAvcDelimiter(), WriteAvcSlice(P(1, 2))});
    ASSERT_EQ(index.pictures.size(), 2u);
    EXPECT_EQ(index.pictures[0].start, 1u); // the short start code within the long one
    EXPECT_EQ(index.pictures[0].end, first.size());
    EXPECT_EQ(index.pictures[1].start, first.size() + 1);
}

TEST(AvcIndexer, PicturesWithTheSameHeadAreToldApartByADelimiter) {
    // Two pictures that nothing else tells apart: both not referred to, the order type without numbers.
    AvcSpsShape shape;
    shape.pocType = 2;
    const Bytes slice = WriteAvcSlice(B(1, 0), shape);
    EXPECT_EQ(Avc({WriteAvcSps(shape), WriteAvcPps(), WriteAvcSlice(Idr(), shape), slice, WriteAvcDelimiter(), slice})
                  .pictures.size(),
              3u);
}

TEST(AvcIndexer, OrderTypeZeroCountsLowBitsOverTheirWrap) {
    // I P B B, and the four bits of the order wrap at 16.
    EXPECT_THAT(
        Shown(Avc({WriteAvcSps(), WriteAvcPps(), WriteAvcSlice(Idr()), WriteAvcSlice(P(1, 6)), WriteAvcSlice(B(2, 2)),
                   WriteAvcSlice(B(2, 4)), WriteAvcSlice(P(2, 12)), WriteAvcSlice(B(3, 8)), WriteAvcSlice(B(3, 10)),
                   WriteAvcSlice(P(3, 2)), WriteAvcSlice(B(4, 14)), WriteAvcSlice(B(4, 0))})),
        ElementsAre("0*", "3", "1", "2", "6", "4", "5", "9", "7", "8"));
}

TEST(AvcIndexer, OrderTypeOneFollowsItsCycle) {
    AvcSpsShape shape;
    shape.pocType = 1;
    shape.cycle = {2, 4};
    shape.offsetForNonRefPic = -3;
    // Reference frames at 2, 6, 8; the ones that are not at one frame less minus 3: 3 and 5.
    EXPECT_THAT(Shown(Avc({WriteAvcSps(shape), WriteAvcPps(), WriteAvcSlice(Idr(), shape),
                           WriteAvcSlice(P(1, 0), shape), WriteAvcSlice(P(2, 0), shape), WriteAvcSlice(B(3, 0), shape),
                           WriteAvcSlice(P(3, 0), shape), WriteAvcSlice(B(4, 0), shape)})),
                ElementsAre("0*", "1", "4", "2", "5", "3"));
}

TEST(AvcIndexer, OrderTypeTwoIsTheOrderOfDecoding) {
    AvcSpsShape shape;
    shape.pocType = 2;
    std::vector<Bytes> units{WriteAvcSps(shape), WriteAvcPps(), WriteAvcSlice(Idr(), shape)};
    Bytes stream = Joined({units[0], units[1], units[2]});
    std::vector<std::string> expected{"0*"};
    for (UINT32 i = 1; i < 40; ++i) { // frame numbers wrap at 16
        const Bytes slice = WriteAvcSlice(P(i % 16, 0), shape);
        stream.insert(stream.end(), slice.begin(), slice.end());
        expected.push_back(std::to_string(i));
    }
    EXPECT_EQ(Shown(IndexAvc(MemorySource(stream))), expected);
}

TEST(AvcIndexer, EachIdrBeginsAnew) {
    EXPECT_THAT(Shown(Avc({WriteAvcSps(), WriteAvcPps(), WriteAvcSlice(Idr()), WriteAvcSlice(P(1, 4)),
                           WriteAvcSlice(B(2, 2)), WriteAvcSps(), WriteAvcPps(), WriteAvcSlice(Idr()),
                           WriteAvcSlice(P(1, 4)), WriteAvcSlice(B(2, 2))})),
                ElementsAre("0*", "2", "1", "3*", "5", "4"));
}

TEST(AvcIndexer, ForgettingAllReferencesBeginsAnewToo) {
    AvcSliceShape reset = P(2, 8);
    reset.forgetsAll = true;
    EXPECT_THAT(Shown(Avc({WriteAvcSps(), WriteAvcPps(), WriteAvcSlice(Idr()), WriteAvcSlice(P(1, 6)),
                           WriteAvcSlice(reset), WriteAvcSlice(P(1, 4)), WriteAvcSlice(B(2, 2))})),
                ElementsAre("0*", "1", "2", "4", "3"));
}

TEST(AvcIndexer, BothFieldsOfAFrameAreOnePicture) {
    AvcSpsShape shape;
    shape.frameMbsOnly = false;
    const auto field = [&](AvcSliceShape slice, bool bottom, UINT32 pocLsb) {
        slice.bottomField = bottom;
        slice.pocLsb = pocLsb;
        return WriteAvcSlice(slice, shape);
    };
    const PictureIndex index =
        Avc({WriteAvcSps(shape), WriteAvcPps(), field(Idr(), false, 0), field(P(0, 0), true, 1),
             field(P(1, 0), false, 4), field(P(1, 0), true, 5), field(B(2, 0), true, 3), field(B(2, 0), false, 2)});
    EXPECT_THAT(Shown(index), ElementsAre("0*", "2", "1"));
    EXPECT_EQ(index.pictures[2].order, 2);
    EXPECT_EQ(index.shape.height, 240u);
}

TEST(AvcIndexer, AnExactRecoveryPointIsAKeyframe) {
    EXPECT_THAT(Shown(Avc({WriteAvcSps(), WriteAvcPps(), WriteAvcSlice(Idr()), WriteAvcRecoveryPoint(0),
                           WriteAvcSlice(P(1, 2)), WriteAvcRecoveryPoint(3), WriteAvcSlice(P(2, 4))})),
                ElementsAre("0*", "1*", "2"));
}

TEST(AvcIndexer, SlicesWithoutTheirParameterSetsAreDamage) {
    EXPECT_TRUE(Avc({WriteAvcSlice(Idr())}).pictures.empty());
    const PictureIndex index = Avc({WriteAvcSlice(Idr()), WriteAvcSps(), WriteAvcPps(), WriteAvcSlice(Idr())});
    EXPECT_EQ(index.pictures.size(), 1u);
    EXPECT_TRUE(index.isDamaged);
}

TEST(HevcIndexer, PicturesAreShownByTheirOrderAndKeyframesAreRandomAccessPoints) {
    const PictureIndex index =
        Hevc({WriteHevcParameterSets(), WriteHevcSlice(19, 0), WriteHevcSlice(1, 4), WriteHevcSlice(1, 2),
              WriteHevcSlice(0, 1, 1), WriteHevcSlice(0, 3, 1), WriteHevcSlice(21, 8), WriteHevcSlice(8, 6),
              WriteHevcSlice(8, 5), WriteHevcSlice(8, 7)});
    EXPECT_THAT(Shown(index), ElementsAre("0*", "4", "2", "1", "3", "8*", "6", "5", "7"));
    EXPECT_FALSE(index.isDamaged);
    EXPECT_EQ(index.shape.width, 320u);
    EXPECT_EQ(index.shape.height, 240u);
}

TEST(HevcIndexer, LowBitsWrapAndUnreferencedPicturesAreNotCountedFrom) {
    Bytes stream = Joined({WriteHevcParameterSets(), WriteHevcSlice(19, 0)});
    std::vector<std::string> expected{"0*"};
    for (UINT32 i = 1; i < 50; ++i) { // each pair: first the later one, which the next are counted from
        for (const Bytes& slice : {WriteHevcSlice(1, 20 * i % 256), WriteHevcSlice(0, (20 * i - 10) % 256)}) {
            stream.insert(stream.end(), slice.begin(), slice.end());
        }
        expected.push_back(std::to_string(2 * i));
        expected.push_back(std::to_string(2 * i - 1));
    }
    EXPECT_EQ(Shown(IndexHevc(MemorySource(stream))), expected);
}

TEST(HevcIndexer, ASequenceBeginsAtEachIdrAndBehindItsEndMark) {
    const Bytes end = WriteHevcUnit(36, mkv_test::BitWriter());
    const PictureIndex index =
        Hevc({WriteHevcParameterSets(), WriteHevcSlice(21, 40), WriteHevcSlice(1, 44), WriteHevcSlice(20, 0),
              WriteHevcSlice(1, 2), end, WriteHevcSlice(21, 100), WriteHevcSlice(1, 101)});
    EXPECT_THAT(Shown(index), ElementsAre("0*", "1", "2*", "3", "4*", "5"));
}

TEST(HevcIndexer, FurtherSegmentsAndSuffixesStayWithTheirPicture) {
    mkv_test::BitWriter segment;
    segment.Flag(false).Bits(0x55, 8);
    const Bytes first = Joined(
        {WriteHevcParameterSets(), WriteHevcSlice(19, 0), WriteHevcUnit(19, segment), WriteHevcUnit(40, segment)});
    const PictureIndex index = Hevc({first, WriteHevcUnit(39, segment), WriteHevcSlice(1, 1)});
    ASSERT_EQ(index.pictures.size(), 2u);
    EXPECT_EQ(index.pictures[0].end, first.size());
    EXPECT_EQ(index.pictures[1].start, first.size() + 1);
}

TEST(HevcIndexer, ParameterSetsOfAnotherLayerStayBehindThoseOfTheBaseLayer) {
    mkv_test::BitWriter content;
    content.Bits(0x55, 8);
    const auto otherLayer = [&content](BYTE type) { return Unit({static_cast<BYTE>(type << 1), 0x09}, content); };
    const Bytes lead = Joined({WriteHevcParameterSets(), otherLayer(33), otherLayer(34)});
    const Bytes first = Joined({lead, WriteHevcSlice(19, 0), otherLayer(39), otherLayer(1)});
    const PictureIndex index = Hevc({first, lead, WriteHevcSlice(21, 1), otherLayer(21)});
    ASSERT_EQ(index.pictures.size(), 2u);
    EXPECT_EQ(index.pictures[0].start, 1u);
    EXPECT_EQ(index.pictures[0].end, first.size());
    EXPECT_EQ(index.pictures[1].start, first.size() + 1);
}

template <Codec Which>
std::unique_ptr<source::PacketReader> ReaderOf(const Bytes& bytes) {
    auto source = std::make_unique<source::BufferedSource>(std::make_unique<MemorySource>(bytes));
    PictureIndex index = Which == Codec::Avc ? IndexAvc(*source) : IndexHevc(*source);
    if (index.pictures.empty()) {
        return nullptr;
    }
    return std::make_unique<AnnexBReader>(std::move(source), std::move(index), Which, FrameRate{});
}

TEST(AnnexBReader, GivesEachPictureItsTimeAndLongStartCodes) {
    AvcSliceShape second = Idr();
    second.firstMb = 150; // behind a short start code
    const auto reader =
        ReaderOf<Codec::Avc>(Joined({WriteAvcSps(), WriteAvcPps(), WriteAvcSlice(Idr()), WriteAvcSlice(second),
                                     WriteAvcSlice(P(1, 4)), WriteAvcSlice(B(2, 2))}));
    const auto packets = test_source::ReadAll(*reader);
    ASSERT_EQ(packets.size(), 3u);
    EXPECT_EQ(packets[0].start, 0);
    EXPECT_EQ(packets[0].stop, 400'000);
    EXPECT_EQ(packets[1].start, 800'000);
    EXPECT_EQ(packets[2].start, 400'000);
    EXPECT_TRUE(packets[0].keyframe);
    EXPECT_FALSE(packets[1].keyframe);
    Bytes secondUnit = WriteAvcSlice(second);
    secondUnit.insert(secondUnit.begin(), 0);
    EXPECT_EQ(packets[0].data, Joined({WriteAvcSps(), WriteAvcPps(), WriteAvcSlice(Idr()), secondUnit}));
}

TEST(AnnexBReader, ZerosAroundUnitsAreLeftOutAndEveryStartCodeIsLong) {
    const auto shortened = [](Bytes unit) {
        unit.erase(unit.begin());
        return unit;
    };
    const Bytes zeros(3, 0);
    const Bytes idr = WriteAvcSlice(Idr());
    const Bytes next = WriteAvcSlice(P(1, 4));
    AvcSliceShape second = P(2, 8);
    second.firstMb = 150;
    ASSERT_EQ(idr[3], 1); // behind a long start code
    const auto reader =
        ReaderOf<Codec::Avc>(Joined({shortened(WriteAvcSps()), zeros, WriteAvcPps(), shortened(idr), zeros, next,
                                     shortened(WriteAvcSlice(P(2, 8))), zeros, shortened(WriteAvcSlice(second))}));
    const auto packets = test_source::ReadAll(*reader);
    ASSERT_EQ(packets.size(), 3u);
    EXPECT_EQ(packets[0].data, Joined({WriteAvcSps(), WriteAvcPps(), idr}));
    EXPECT_EQ(packets[1].data, next);
    EXPECT_EQ(packets[2].data, Joined({WriteAvcSlice(P(2, 8)), Bytes(1, 0), WriteAvcSlice(second)}));
}

TEST(AnnexBReader, OffersTheByteStreamTypesWithTheirParameterSets) {
    const auto avc = ReaderOf<Codec::Avc>(Joined(
        {WriteAvcSps(), WriteAvcPps(), WriteAvcSlice(Idr()), WriteAvcSps(), WriteAvcPps(), WriteAvcSlice(Idr())}));
    const media::CodecDescription written = media::DescribeCodec(avc->Streams().at(0).types.at(0));
    EXPECT_EQ(written.codecId, "V_MPEG4/ISO/AVC");
    EXPECT_EQ(written.defaultDurationNs, 40'000'000u);
    EXPECT_EQ(written.video->pixelWidth, 320u);
    const Bytes& record = *written.codecPrivate;
    const Bytes sps = WriteAvcSps();
    const Bytes pps = WriteAvcPps();
    ASSERT_EQ(record.size(), 7 + 2 + (sps.size() - 4) + 2 + (pps.size() - 4)) << "each set once";
    EXPECT_EQ(record[1], 77);
    EXPECT_EQ(record[3], 30);
    EXPECT_EQ(record[5], 1);
    const auto hevc = ReaderOf<Codec::Hevc>(Joined({WriteHevcParameterSets(), WriteHevcSlice(19, 0)}));
    const media::CodecDescription hevcWritten = media::DescribeCodec(hevc->Streams().at(0).types.at(0));
    EXPECT_EQ(hevcWritten.codecId, "V_MPEGH/ISO/HEVC");
    EXPECT_EQ(hevcWritten.codecPrivate->at(22), 3) << "VPS, SPS and PPS";
}

TEST(FrameRate, IsReadAsANumberOrAFraction) {
    const auto rate = [](const char* text) {
        const auto parsed = ParseFrameRate(text);
        return parsed ? std::to_string(parsed->pictures) + "/" + std::to_string(parsed->seconds) : "none";
    };
    EXPECT_EQ(rate("25"), "25/1");
    EXPECT_EQ(rate("23.976"), "24000/1001");
    EXPECT_EQ(rate("23.98"), "24000/1001");
    EXPECT_EQ(rate("29.97"), "30000/1001");
    EXPECT_EQ(rate("59.94"), "60000/1001");
    EXPECT_EQ(rate("12.5"), "1250000/100000");
    EXPECT_EQ(rate("30000/1001"), "30000/1001");
    for (const char* const text :
         {"", "x", "0", "-25", "25x", "1/0", "0/1", "1e3", "nan", "20000", "0.0001", "1/2/3"}) {
        EXPECT_EQ(rate(text), "none") << text;
    }
}

TEST(FrameRate, LongStreamsKeepTheirExactTimes) {
    const FrameRate rate{30000, 1001};
    EXPECT_EQ(rate.TimeOf(0), 0);
    EXPECT_EQ(rate.TimeOf(1), 333'666);
    EXPECT_EQ(rate.TimeOf(30000), 1001 * INT64{10'000'000});
    EXPECT_EQ(rate.TimeOf(30'000'000'000), 1'001'000'000 * INT64{10'000'000});
}

Bytes LongAvc() {
    Bytes stream;
    for (UINT32 i = 0; i < 60; ++i) {
        const bool isIdr = i % 12 == 0;
        AvcSliceShape slice = isIdr ? Idr() : (i % 3 == 0 ? B(i % 16, 2 * i % 16) : P(i % 16, 2 * i % 16));
        for (const Bytes& unit :
             {WriteAvcDelimiter(), isIdr ? Joined({WriteAvcSps(), WriteAvcPps(), WriteAvcRecoveryPoint(0)}) : Bytes(),
              WriteAvcSlice(slice)}) {
            stream.insert(stream.end(), unit.begin(), unit.end());
        }
    }
    return stream;
}

Bytes LongHevc() {
    Bytes stream;
    for (UINT32 i = 0; i < 60; ++i) {
        const bool isIrap = i % 12 == 0;
        for (const Bytes& unit : {isIrap ? WriteHevcParameterSets() : Bytes(),
                                  WriteHevcSlice(isIrap ? (i == 0 ? BYTE{19} : BYTE{21}) : BYTE{1}, i)}) {
            stream.insert(stream.end(), unit.begin(), unit.end());
        }
    }
    return stream;
}

TEST(AvcIndexer, ReadsWhatATruncatedStreamStillHolds) {
    test_source::CheckTruncations(ReaderOf<Codec::Avc>, LongAvc(), false);
}

TEST(AvcIndexer, SurvivesFlippedBits) {
    test_source::CheckBitFlips(ReaderOf<Codec::Avc>, LongAvc());
}

TEST(HevcIndexer, ReadsWhatATruncatedStreamStillHolds) {
    test_source::CheckTruncations(ReaderOf<Codec::Hevc>, LongHevc(), false);
}

TEST(HevcIndexer, SurvivesFlippedBits) {
    test_source::CheckBitFlips(ReaderOf<Codec::Hevc>, LongHevc());
}

} // namespace
} // namespace annexb
