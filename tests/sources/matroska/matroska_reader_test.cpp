#include "sources/matroska/matroska_reader.h"

#include <gmock/gmock.h>
#include <zlib.h>

#include "sources/base/buffered_source.h"
#include "tests/sources/base/memory_source.h"
#include "tests/sources/base/packet_checks.h"
#include "tests/sources/matroska/matroska_builder.h"

namespace matroska {
namespace {

using namespace test_matroska;
using test_source::MemorySource;
using test_support::Concatenate;
using test_support::RawElement;
using test_support::RawText;
using test_support::RawUnsigned;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::unique_ptr<MatroskaReader> ReaderOf(const RawBytes& bytes) {
    auto source = std::make_unique<source::BufferedSource>(std::make_unique<MemorySource>(bytes));
    std::optional<MatroskaFile> file = ReadMatroskaFile(*source);
    return file ? std::make_unique<MatroskaReader>(std::move(source), std::move(*file)) : nullptr;
}

// "0:abc@10-20*" for each packet, in units of 100 ns; no stop without one, a star for keyframes.
std::vector<std::string> Summary(const RawBytes& bytes) {
    const auto reader = ReaderOf(bytes);
    if (!reader) {
        return {"refused"};
    }
    std::vector<std::string> texts;
    for (const source::Packet& packet : test_source::ReadAll(*reader)) {
        std::string text = std::to_string(packet.stream) + ":" + std::string(packet.data.begin(), packet.data.end()) +
                           "@" + std::to_string(packet.start);
        text += packet.hasStop ? "-" + std::to_string(packet.stop) : "";
        texts.push_back(text + (packet.keyframe ? "*" : ""));
    }
    return texts;
}

HRESULT DamageOf(const RawBytes& bytes) {
    const auto reader = ReaderOf(bytes);
    (void)test_source::ReadAll(*reader);
    return reader->Damage();
}

RawBytes Audio(uint8_t number, std::initializer_list<RawBytes> more = {}) {
    return TrackEntry(number, 2, "A_AC3", more);
}

RawBytes DefaultDuration(uint64_t ns) {
    return RawUnsigned(id::kDefaultDuration, ns);
}

// Its frames last a millisecond.
RawBytes Sound(uint8_t number) {
    return Audio(number, {DefaultDuration(1'000'000)});
}

TEST(MatroskaReader, GivesTheBlocksOfAllTracksInTheOrderOfTheFile) {
    const RawBytes file =
        FileOf({Sound(1), Sound(7)}, {Cluster(0, {SimpleBlock(1, 0, kKeyframe, "a"), SimpleBlock(7, 3, 0, "b")}),
                                      Cluster(100, {SimpleBlock(7, -5, kKeyframe, "c")})});
    EXPECT_THAT(Summary(file), ElementsAre("0:a@0-10000*", "1:b@30000-40000", "1:c@950000-960000*"));
    EXPECT_EQ(DamageOf(file), S_OK);
    EXPECT_EQ(ReaderOf(file)->Streams()[1].name, OLESTR("Track 7"));
}

TEST(MatroskaReader, EachReadingBeginsAtTheStart) {
    const auto reader = ReaderOf(RichFile());
    const size_t count = test_source::ReadAll(*reader).size();
    EXPECT_EQ(count, 40u * 5);
    EXPECT_EQ(test_source::ReadAll(*reader).size(), count);
    EXPECT_EQ(reader->Damage(), S_OK);
}

TEST(MatroskaReader, APacketsMemoryIsUsedForTheNextOneUnlessThatIsFarSmaller) {
    const std::string large(500'000, 'l');
    const std::string lesser(400'000, 'm');
    const auto reader =
        ReaderOf(FileOf({Sound(1)}, {Cluster(0, {SimpleBlock(1, 0, 0, large), SimpleBlock(1, 1, 0, lesser),
                                                 SimpleBlock(1, 2, 0, "small"), SimpleBlock(1, 3, 0, large)})}));
    reader->Rewind();
    source::Packet packet;
    ASSERT_TRUE(reader->Next(packet));
    const BYTE* const place = packet.data.data();
    ASSERT_TRUE(reader->Next(packet));
    EXPECT_EQ(packet.data.data(), place);
    EXPECT_EQ(packet.data.size(), lesser.size());
    ASSERT_TRUE(reader->Next(packet));
    EXPECT_LT(packet.data.capacity(), 70'000u);
    EXPECT_EQ(std::string(packet.data.begin(), packet.data.end()), "small");
    ASSERT_TRUE(reader->Next(packet));
    EXPECT_EQ(packet.data.data(), place);
    EXPECT_EQ(std::string(packet.data.begin(), packet.data.end()), large);
    EXPECT_FALSE(reader->Next(packet));
}

TEST(MatroskaReader, BlocksOfUnknownTracksAreSkipped) {
    EXPECT_THAT(Summary(FileOf({Audio(1)}, {Cluster(0, {SimpleBlock(2, 0, 0, "x"), SimpleBlock(1, 0, 0, "a")})})),
                ElementsAre("0:a@0"));
}

TEST(MatroskaReader, GroupsTellDurationsAndKeyframes) {
    const RawBytes file =
        FileOf({Audio(1)}, {Cluster(0, {BlockGroup(1, 0, 0, "a", {RawUnsigned(id::kBlockDuration, 25)}),
                                        BlockGroup(1, 25, 0, "b", {RawElement(id::kReferenceBlock, {0xf6})})})});
    EXPECT_THAT(Summary(file), ElementsAre("0:a@0-250000*", "0:b@250000"));
}

TEST(MatroskaReader, StopTimesComeFromTheDefaultDurationToAHundredNanoseconds) {
    const RawBytes file = FileOf({Audio(1, {DefaultDuration(33'366'666)})},
                                 {Cluster(0, {SimpleBlock(1, 0, 0, "a"), SimpleBlock(1, 33, 0, "b")})});
    EXPECT_THAT(Summary(file), ElementsAre("0:a@0-333666", "0:b@330000-663666"));
}

TEST(MatroskaReader, OtherTimestampScalesAreExactToAHundredNanoseconds) {
    const RawBytes info = Master(id::kInfo, {RawUnsigned(id::kTimestampScale, 20833)});
    const RawBytes file = Concatenate(
        {Head("webm"), Master(id::kSegment, {info, Master(id::kTracks, {Audio(1)}),
                                             Cluster(1000, {SimpleBlock(1, 1, 0, "a"), SimpleBlock(1, 7, 0, "b")})})});
    // 1001 * 20833 ns = 20853833 ns
    EXPECT_THAT(Summary(file), ElementsAre("0:a@208538", "0:b@209788"));
}

TEST(MatroskaReader, LacedFramesFollowOneAnotherByTheDefaultDuration) {
    const RawBytes file =
        FileOf({Audio(1, {DefaultDuration(21'333'333)})}, {Cluster(10, {SimpleBlock(1, 0, kFixedLacing, "\2abc")})});
    EXPECT_THAT(Summary(file), ElementsAre("0:a@100000-313333", "0:b@313333-526666", "0:c@526666-739999"));
}

TEST(MatroskaReader, LacedFramesShareTheDurationOfTheirBlock) {
    const RawBytes file = FileOf(
        {Audio(1)}, {Cluster(0, {BlockGroup(1, 0, kXiphLacing, "\1\1ab", {RawUnsigned(id::kBlockDuration, 30)})})});
    EXPECT_THAT(Summary(file), ElementsAre("0:a@0-150000*", "0:b@150000-300000*"));
}

TEST(MatroskaReader, LacedFramesWithoutAnyDurationShareTheTimeToTheNextBlock) {
    const RawBytes file =
        FileOf({Audio(1), Sound(2)}, {Cluster(0, {SimpleBlock(1, 0, kFixedLacing, "\1ab"), SimpleBlock(2, 5, 0, "x"),
                                                  SimpleBlock(1, 20, kFixedLacing, "\1cd")})});
    EXPECT_THAT(Summary(file), ElementsAre("1:x@50000-60000", "0:a@0-100000", "0:b@100000-200000", "0:c@200000-300000",
                                           "0:d@300000-400000"));
}

TEST(MatroskaReader, TheLastFrameLastsUntilTheFileSaysThatItEnds) {
    const RawBytes info = Master(id::kInfo, {Float(id::kDuration, 100)});
    const RawBytes file = Concatenate(
        {Head(), Master(id::kSegment, {info, Master(id::kTracks, {Audio(1)}),
                                       Cluster(0, {SimpleBlock(1, 0, 0, "a"), SimpleBlock(1, 40, 0, "b")})})});
    EXPECT_THAT(Summary(file), ElementsAre("0:a@0", "0:b@400000-1000000"));
}

TEST(MatroskaReader, AFrameWithoutADurationIsHeldForASecondAtMost) {
    const RawBytes file =
        FileOf({Audio(1), Sound(2)},
               {Cluster(0, {SimpleBlock(1, 0, 0, "a"), SimpleBlock(2, 1000, 0, "x"), SimpleBlock(2, 1001, 0, "y")})});
    EXPECT_THAT(Summary(file), ElementsAre("1:x@10000000-10010000", "0:a@0", "1:y@10010000-10020000"));
}

TEST(MatroskaReader, AllStreamsAreShiftedTogetherWhenOneBeginsBelowZero) {
    const RawBytes file =
        FileOf({Sound(1), Sound(2)},
               {Cluster(5, {SimpleBlock(1, 0, 0, "a"), SimpleBlock(2, -45, 0, "b"), SimpleBlock(1, 10, 0, "c")})});
    EXPECT_THAT(Summary(file), ElementsAre("0:a@450000-460000", "1:b@0-10000", "0:c@550000-560000"));
}

TEST(MatroskaReader, UnknownSizesEndWhereSomethingElseBegins) {
    const RawBytes file = Concatenate(
        {Head(),
         UnknownMaster(id::kSegment,
                       {Master(id::kTracks, {Audio(1)}),
                        UnknownMaster(id::kCluster, {RawUnsigned(id::kTimestamp, 1), SimpleBlock(1, 0, 0, "a")}),
                        UnknownMaster(id::kCluster, {RawUnsigned(id::kTimestamp, 2), SimpleBlock(1, 0, 0, "b")}),
                        Master(id::kCues, {}), Cluster(3, {SimpleBlock(1, 0, 0, "c")})})});
    EXPECT_THAT(Summary(file), ElementsAre("0:a@10000", "0:b@20000", "0:c@30000"));
    EXPECT_EQ(DamageOf(file), S_OK);
}

TEST(MatroskaReader, VoidElementsMayStandEverywhere) {
    const RawBytes filler = RawElement(id::kVoid, RawBytes(50, 0xa3));
    const RawBytes file =
        Concatenate({Head(), filler,
                     Master(id::kSegment, {filler, Master(id::kTracks, {filler, Audio(1, {filler})}), filler,
                                           Cluster(0, {filler, SimpleBlock(1, 0, 0, "a"), filler})})});
    EXPECT_THAT(Summary(file), ElementsAre("0:a@0"));
    EXPECT_EQ(DamageOf(file), S_OK);
}

TEST(MatroskaReader, TracksMayComeBehindTheClusters) {
    const RawBytes file = Concatenate(
        {Head(), Master(id::kSegment, {Cluster(0, {SimpleBlock(1, 0, 0, "a")}), Master(id::kTracks, {Audio(1)})})});
    EXPECT_THAT(Summary(file), ElementsAre("0:a@0"));
}

RawBytes Compression(std::initializer_list<RawBytes> settings, std::initializer_list<RawBytes> more = {}) {
    return Master(id::kContentEncoding, {Master(id::kContentCompression, settings), Concatenate(more)});
}

RawBytes Deflated(const std::string& text) {
    uLongf size = compressBound(static_cast<uLong>(text.size()));
    RawBytes bytes(size);
    EXPECT_EQ(
        compress(bytes.data(), &size, reinterpret_cast<const Bytef*>(text.data()), static_cast<uLong>(text.size())),
        Z_OK);
    bytes.resize(size);
    return bytes;
}

std::string AsText(const RawBytes& bytes) {
    return {bytes.begin(), bytes.end()};
}

TEST(MatroskaReader, StrippedHeadersComeBack) {
    const RawBytes encodings =
        Master(id::kContentEncodings,
               {Compression({RawUnsigned(id::kContentCompAlgo, 3), RawText(id::kContentCompSettings, "He")})});
    EXPECT_THAT(Summary(FileOf({Audio(1, {encodings})}, {Cluster(0, {SimpleBlock(1, 0, kFixedLacing, "\1llmm")})})),
                ElementsAre("0:Hell@0-0", "0:Hemm@0-0"));
}

TEST(MatroskaReader, CompressedFramesAndPrivateDataAreInflated) {
    const RawBytes encodings =
        Master(id::kContentEncodings,
               {Compression({RawUnsigned(id::kContentCompAlgo, 0)}, {RawUnsigned(id::kContentEncodingScope, 3)})});
    const std::string text(200'000, 'x');
    const RawBytes track =
        TrackEntry(1, 17, "S_TEXT/ASS", {RawElement(id::kCodecPrivate, Deflated("[Script Info]"), 2), encodings});
    const RawBytes file = FileOf({track}, {Cluster(0, {SimpleBlock(1, 0, kKeyframe, AsText(Deflated(text)))})});
    EXPECT_THAT(Summary(file), ElementsAre("0:" + text + "@0*"));
    const CMediaType type = ReaderOf(file)->Streams()[0].types.at(0);
    EXPECT_THAT(std::string(type.pbFormat, type.pbFormat + type.cbFormat), HasSubstr("[Script Info]"));
}

TEST(MatroskaReader, AFrameThatCannotBeInflatedIsLostAndTold) {
    const RawBytes encodings = Master(id::kContentEncodings, {Compression({RawUnsigned(id::kContentCompAlgo, 0)})});
    const RawBytes file = FileOf(
        {Audio(1, {encodings})},
        {Cluster(0, {SimpleBlock(1, 0, 0, "no deflate stream"), SimpleBlock(1, 1, 0, AsText(Deflated("fine")))})});
    EXPECT_THAT(Summary(file), ElementsAre("0:fine@10000"));
    EXPECT_TRUE(FAILED(DamageOf(file)));
}

TEST(MatroskaReader, TracksThatCannotBeReadAreNamedWithTheCause) {
    const RawBytes encrypted =
        Master(id::kContentEncodings, {Master(id::kContentEncoding, {RawUnsigned(id::kContentEncodingType, 1)})});
    const RawBytes lzo = Master(id::kContentEncodings, {Compression({RawUnsigned(id::kContentCompAlgo, 2)})});
    const auto reader = ReaderOf(FileOf({TrackEntry(1, 1, "V_DIRAC"), Audio(2, {encrypted}), Audio(3, {lzo}),
                                         TrackEntry(4, 17, "S_\x1b[31mX"), TrackEntry(5, 33, "D_META"), Audio(6)},
                                        {}));
    const auto& streams = reader->Streams();
    ASSERT_EQ(streams.size(), 6u);
    EXPECT_EQ(streams[0].problem, "V_DIRAC: no media type carries this codec");
    EXPECT_EQ(streams[1].problem, "A_AC3: the track is encrypted");
    EXPECT_EQ(streams[2].problem, "A_AC3: the track is compressed with an algorithm that is not supported (2)");
    EXPECT_EQ(streams[3].problem, "S_?[31mX: no media type carries this codec");
    EXPECT_EQ(streams[4].problem, "D_META: no media type carries this codec");
    EXPECT_EQ(streams[5].problem, "");
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_THAT(streams[i].types, IsEmpty()) << i;
    }
}

TEST(MatroskaReader, TellsWhatTheFileSaysOfItsTracks) {
    const auto reader = ReaderOf(
        FileOf({Audio(1, {RawText(id::kName, "Tön"), RawText(id::kLanguage, "ger"), RawUnsigned(id::kFlagDefault, 0),
                          RawUnsigned(id::kFlagForced, 1), RawUnsigned(id::kFlagEnabled, 0)}),
                Audio(2), Audio(3, {RawText(id::kLanguageTag, "pt-BR")})},
               {}));
    const auto propertiesOf = [&](size_t i) { return reader->Streams()[i].properties; };
    EXPECT_EQ(propertiesOf(0).name, "Tön");
    EXPECT_EQ(propertiesOf(0).language, "ger");
    EXPECT_FALSE(propertiesOf(0).isDefault);
    EXPECT_TRUE(propertiesOf(0).isForced);
    EXPECT_FALSE(propertiesOf(0).isEnabled);
    EXPECT_TRUE(propertiesOf(1).known);
    EXPECT_EQ(propertiesOf(1).language, "eng"); // what the format says when nothing is said
    EXPECT_TRUE(propertiesOf(1).isDefault);
    EXPECT_FALSE(propertiesOf(1).isForced);
    EXPECT_TRUE(propertiesOf(1).isEnabled);
    EXPECT_EQ(propertiesOf(2).language, "pt");
}

TEST(MatroskaReader, TellsTheFlagsThatATrackHasAndNoOthers) {
    const auto reader =
        ReaderOf(FileOf({Audio(1, {RawUnsigned(id::kFlagHearingImpaired, 1), RawUnsigned(id::kFlagOriginal, 0)}),
                         Audio(2, {RawUnsigned(id::kFlagVisualImpaired, 0), RawUnsigned(id::kFlagCommentary, 1)})},
                        {}));
    const source::TrackProperties& first = reader->Streams()[0].properties;
    EXPECT_EQ(first.hearingImpaired, true);
    EXPECT_EQ(first.visualImpaired, std::nullopt);
    EXPECT_EQ(first.original, false);
    EXPECT_EQ(first.commentary, std::nullopt);
    const source::TrackProperties& second = reader->Streams()[1].properties;
    EXPECT_EQ(second.hearingImpaired, std::nullopt);
    EXPECT_EQ(second.visualImpaired, false);
    EXPECT_EQ(second.original, std::nullopt);
    EXPECT_EQ(second.commentary, true);
}

TEST(MatroskaReader, TheTitleOfTheFileEndsAtItsFirstZero) {
    const auto titleOf = [](const std::string& title) {
        const RawBytes info = Master(id::kInfo, {RawText(id::kTitle, title)});
        const source::BufferedSource bytes(std::make_unique<MemorySource>(FileOf({Audio(1)}, {info})));
        return ReadMatroskaFile(bytes)->title;
    };
    EXPECT_EQ(titleOf("Ein Film"), "Ein Film");
    EXPECT_EQ(titleOf(std::string("Ein\0Film", 8)), "Ein");
    EXPECT_EQ(titleOf(""), "");
}

TEST(MatroskaReader, HandsOutAttachments) {
    const RawBytes attachments =
        Master(id::kAttachments,
               {Master(id::kAttachedFile, {RawText(id::kFileName, "font.ttf"), RawText(id::kFileDescription, "a font"),
                                           RawText(id::kFileMimeType, "font/ttf"), RawText(id::kFileData, "bytes"),
                                           RawUnsigned(id::kFileUid, 99)})});
    std::vector<std::string> leftOut;
    const auto list = ReaderOf(FileOf({Audio(1)}, {Cluster(0, {}), attachments}))->ReadAttachments(leftOut);
    EXPECT_THAT(leftOut, IsEmpty());
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].fileName, "font.ttf");
    EXPECT_EQ(list[0].description, "a font");
    EXPECT_EQ(list[0].mimeType, "font/ttf");
    EXPECT_EQ(list[0].uid, 99u);
    EXPECT_EQ(std::string(list[0].data.begin(), list[0].data.end()), "bytes");
}

// Gives nothing behind an offset, although its size says otherwise: a disk that fails.
class FailingSource final : public source::ByteSource {
  public:
    FailingSource(RawBytes bytes, UINT64 readable) : m_bytes(std::move(bytes)), m_readable(readable) {}
    UINT64 Size() const override { return m_bytes.Size(); }
    size_t ReadAt(UINT64 offset, std::span<BYTE> buffer) const override {
        const UINT64 room = offset < m_readable ? m_readable - offset : 0;
        return m_bytes.ReadAt(offset, buffer.first(static_cast<size_t>(std::min<UINT64>(room, buffer.size()))));
    }

  private:
    MemorySource m_bytes;
    UINT64 m_readable;
};

TEST(MatroskaReader, AttachmentsThatCannotBeReadAreNamed) {
    const RawBytes file = FileOf(
        {Audio(1)},
        {Master(id::kAttachments,
                {Master(id::kAttachedFile, {RawText(id::kFileName, "a.txt"), RawText(id::kFileData, "0123456789")})})});
    auto source = std::make_unique<FailingSource>(file, file.size() - 5);
    std::optional<MatroskaFile> head = ReadMatroskaFile(*source);
    ASSERT_TRUE(head);
    std::vector<std::string> leftOut;
    EXPECT_THAT(MatroskaReader(std::move(source), std::move(*head)).ReadAttachments(leftOut), IsEmpty());
    EXPECT_THAT(leftOut, ElementsAre("a.txt"));
}

TEST(MatroskaReader, AFailingDiskIsDamage) {
    const RawBytes file =
        FileOf({Sound(1)}, {Cluster(0, {SimpleBlock(1, 0, 0, "aaaa"), SimpleBlock(1, 1, 0, "bbbb")})});
    auto source = std::make_unique<FailingSource>(file, file.size() - 2);
    std::optional<MatroskaFile> head = ReadMatroskaFile(*source);
    ASSERT_TRUE(head);
    MatroskaReader reader(std::move(source), std::move(*head));
    EXPECT_EQ(test_source::ReadAll(reader).size(), 1u);
    EXPECT_TRUE(FAILED(reader.Damage()));
}

TEST(MatroskaReader, ShortLengthsOfH264UnitsBecomeFourBytesLong) {
    const RawBytes track =
        TrackEntry(1, 1, "V_MPEG4/ISO/AVC", {RawElement(id::kCodecPrivate, {1, 100, 0, 11, 0xfd, 0xe0, 0})});
    const RawBytes file = FileOf({track}, {Cluster(0, {SimpleBlock(1, 0, 0, std::string("\0\2ab\0\1c", 7))})});
    const auto packets = test_source::ReadAll(*ReaderOf(file));
    ASSERT_EQ(packets.size(), 1u);
    EXPECT_EQ(std::string(packets[0].data.begin(), packets[0].data.end()), std::string("\0\0\0\2ab\0\0\0\1c", 11));
}

TEST(MatroskaReader, BehindDamageItGoesOnWithTheNextCluster) {
    RawBytes broken = Cluster(20, {SimpleBlock(1, 0, 0, "b"), SimpleBlock(1, 1, 0, "c")});
    broken[12 + 3] = 0; // inside the first child's head, behind the cluster's head and the timestamp
    const RawBytes file =
        FileOf({Audio(1)}, {Cluster(0, {SimpleBlock(1, 0, 0, "a")}), broken, Cluster(40, {SimpleBlock(1, 0, 0, "d")})});
    EXPECT_THAT(Summary(file), ElementsAre("0:a@0", "0:d@400000"));
    EXPECT_TRUE(FAILED(DamageOf(file)));
}

TEST(MatroskaReader, AClusterWithAWrongSizeDoesNotHideTheNextOne) {
    RawBytes tooLong = Cluster(20, {SimpleBlock(1, 0, 0, "b")});
    tooLong[10] = 0xff; // 65280 bytes more than there are
    const RawBytes file = FileOf({Audio(1)}, {tooLong, Cluster(40, {SimpleBlock(1, 0, 0, "d")})});
    EXPECT_THAT(Summary(file), ElementsAre("0:b@200000", "0:d@400000"));
    EXPECT_TRUE(FAILED(DamageOf(file)));
}

TEST(MatroskaReader, WhatIsNoMatroskaFileIsRefused) {
    EXPECT_THAT(Summary({}), ElementsAre("refused"));
    EXPECT_THAT(Summary(Text("RIFFxxxxAVI ")), ElementsAre("refused"));
    EXPECT_THAT(Summary(Head()), ElementsAre("refused"));
    EXPECT_THAT(Summary(FileOf({}, {Cluster(0, {SimpleBlock(1, 0, 0, "a")})})), ElementsAre("refused"));
    EXPECT_THAT(Summary(Concatenate({Head("something"), Master(id::kSegment, {Master(id::kTracks, {Audio(1)})})})),
                ElementsAre("refused"));
}

TEST(MatroskaReader, TimesThatNoClockReachesAreDamage) {
    const RawBytes file = FileOf({Audio(1)}, {Cluster(UINT64_MAX, {SimpleBlock(1, 0, 0, "a")}),
                                              Cluster(uint64_t{1} << 60, {SimpleBlock(1, 0, 0, "b")}),
                                              Cluster(1, {SimpleBlock(1, 0, 0, "c")})});
    EXPECT_THAT(Summary(file), ElementsAre("0:c@10000"));
    EXPECT_TRUE(FAILED(DamageOf(file)));
}

TEST(MatroskaReader, DurationsThatNoFrameHasDoNotOverflowTheTimes) {
    const std::string laced = std::string(1, '\xff') + std::string(256, 'a');
    for (const uint64_t ns : {UINT64_MAX, uint64_t{1} << 60, uint64_t{3'600'000'000'000'000}}) {
        const RawBytes file =
            FileOf({Audio(1, {DefaultDuration(ns)})}, {Cluster(0, {SimpleBlock(1, 0, kFixedLacing, laced)})});
        EXPECT_EQ(test_source::CheckReading(ReaderOf, file), 256) << ns;
    }
    const RawBytes distant = FileOf({Audio(1)}, {Cluster(0, {SimpleBlock(1, 0, kFixedLacing, "\1ab")}),
                                                 Cluster(uint64_t{1} << 39, {SimpleBlock(1, 0, kFixedLacing, laced)})});
    EXPECT_EQ(test_source::CheckReading(ReaderOf, distant), 258);
}

TEST(MatroskaReader, AFrameOfMoreThanTheLimitIsNotEvenAskedFor) {
    RawBytes huge = SimpleBlock(1, 0, 0, "a");
    huge[3] = 0x20; // the block claims 512 GiB more
    const RawBytes file = FileOf({Audio(1)}, {Cluster(0, {huge}), Cluster(1, {SimpleBlock(1, 0, 0, "b")})});
    EXPECT_THAT(Summary(file), ElementsAre("0:b@10000"));
    EXPECT_TRUE(FAILED(DamageOf(file)));
}

TEST(MatroskaReader, ReadsWhatATruncatedFileStillHolds) {
    test_source::CheckTruncations(ReaderOf, RichFile(), true);
}

TEST(MatroskaReader, SurvivesFlippedBits) {
    test_source::CheckBitFlips(ReaderOf, RichFile());
}

// ---- Pictures

DWORD InterlaceFlagsOf(std::initializer_list<RawBytes> video) {
    const auto reader = ReaderOf(FileOf({TrackEntry(1, 1, "V_MPEG2", {Master(id::kVideo, video)})}, {}));
    const CMediaType& type = reader->Streams().at(0).types.at(0);
    return reinterpret_cast<const VIDEOINFOHEADER2*>(type.pbFormat)->dwInterlaceFlags;
}

TEST(MatroskaReader, PicturesTellTheirFields) {
    const RawBytes width = RawUnsigned(id::kPixelWidth, 320);
    const RawBytes height = RawUnsigned(id::kPixelHeight, 240);
    const RawBytes interlaced = RawUnsigned(id::kFlagInterlaced, 1);
    EXPECT_EQ(InterlaceFlagsOf({width, height}), 0u);
    EXPECT_EQ(InterlaceFlagsOf({width, height, interlaced, RawUnsigned(id::kFieldOrder, 9)}),
              static_cast<DWORD>(AMINTERLACE_IsInterlaced | AMINTERLACE_Field1First));
    EXPECT_EQ(InterlaceFlagsOf({width, height, interlaced, RawUnsigned(id::kFieldOrder, 14)}),
              static_cast<DWORD>(AMINTERLACE_IsInterlaced));
}

RawBytes VideoOf(std::initializer_list<RawBytes> colour) {
    return Master(id::kVideo,
                  {RawUnsigned(id::kPixelWidth, 320), RawUnsigned(id::kPixelHeight, 240), Master(id::kColour, colour)});
}

TEST(MatroskaReader, PicturesTellTheirColours) {
    using media::Colour;
    const auto reader = ReaderOf(FileOf(
        {TrackEntry(
            1, 1, "V_VP9",
            {VideoOf({RawUnsigned(id::kPrimaries, 9), RawUnsigned(id::kTransferCharacteristics, 16),
                      RawUnsigned(id::kMatrixCoefficients, 9), RawUnsigned(id::kRange, 1),
                      RawUnsigned(id::kMaxCll, 1000),
                      Master(id::kMasteringMetadata, {Float(id::kRedX, 0.68), Float(id::kLuminanceMin, 0.005)})})})},
        {}));
    const Colour& colour = reader->Streams().at(0).properties.colour;
    EXPECT_EQ(colour.numbers[Colour::kPrimaries], 9u);
    EXPECT_EQ(colour.numbers[Colour::kTransfer], 16u);
    EXPECT_EQ(colour.numbers[Colour::kMatrix], 9u);
    EXPECT_EQ(colour.numbers[Colour::kRange], media::kBroadcastRange);
    EXPECT_EQ(colour.numbers[Colour::kMaxContentLight], 1000u);
    EXPECT_EQ(colour.numbers[Colour::kMaxFrameLight], std::nullopt);
    EXPECT_EQ(colour.mastering[Colour::kRedX], 0.68);
    EXPECT_EQ(colour.mastering[Colour::kMinLuminance], 0.005);
    EXPECT_EQ(colour.mastering[Colour::kRedY], std::nullopt);
    // What fits goes with the type, too: primaries, transfer, matrix and range, and the marks.
    const CMediaType& type = reader->Streams().at(0).types.at(0);
    EXPECT_EQ(reinterpret_cast<const VIDEOINFOHEADER2*>(type.pbFormat)->dwControlFlags,
              DWORD{15} << 27 | DWORD{9} << 22 | DWORD{4} << 15 | DWORD{2} << 12 | DWORD{0x81});
}

TEST(MatroskaReader, ColoursThatCannotBeAreNotTold) {
    using media::Colour;
    const auto reader = ReaderOf(FileOf(
        {TrackEntry(
            1, 1, "V_VP9",
            {VideoOf({RawUnsigned(id::kPrimaries, 77), RawUnsigned(id::kMaxCll, UINT64_MAX), RawUnsigned(id::kRange, 0),
                      Master(id::kMasteringMetadata, {Float(id::kRedX, 2), Float(id::kLuminanceMin, -1)})})})},
        {}));
    EXPECT_TRUE(reader->Streams().at(0).properties.colour.IsEmpty());
}

std::vector<BYTE> DolbyVisionOf(uint64_t type, size_t bytes) {
    const RawBytes mapping =
        Master(id::kBlockAdditionMapping, {RawUnsigned(id::kBlockAddIdType, type),
                                           test_support::RawElement(id::kBlockAddIdExtraData, RawBytes(bytes, 7))});
    const auto reader = ReaderOf(FileOf({TrackEntry(1, 1, "V_MPEG2", {mapping, VideoOf({})})}, {}));
    return reader->Streams().at(0).properties.dolbyVision;
}

TEST(MatroskaReader, TheConfigurationOfDolbyVisionIsFoundByItsType) {
    EXPECT_EQ(DolbyVisionOf(0x64766343, 24), std::vector<BYTE>(24, 7));
    EXPECT_EQ(DolbyVisionOf(0x64767643, 24), std::vector<BYTE>(24, 7));
    EXPECT_TRUE(DolbyVisionOf(0x64766343, 23).empty());
    EXPECT_TRUE(DolbyVisionOf(0x64766343, 25).empty());
    EXPECT_TRUE(DolbyVisionOf(4, 24).empty()); // something else that blocks carry
}

} // namespace
} // namespace matroska
