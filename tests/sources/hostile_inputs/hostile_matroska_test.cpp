#include <gmock/gmock.h>
#include <zlib.h>

#include "codecs/unit_lengths.h"
#include "sources/matroska/content_decoder.h"
#include "sources/matroska/frame_queue.h"
#include "sources/matroska/matroska_reader.h"
#include "tests/sources/hostile_inputs/input_cost.h"
#include "tests/sources/matroska/matroska_builder.h"

namespace test_hostile {
namespace {

using namespace test_matroska;
using source::kMiB;
using test_support::RawElement;
using test_support::RawText;
using test_support::RawUnsigned;
using testing::EndsWith;
using testing::IsEmpty;

// So many bytes that are all alike, deflated.
std::string DeflatedZeros(size_t count) {
    const std::vector<BYTE> step(kMiB);
    std::string output(count / 500 + 1024, '\0');
    z_stream stream{};
    EXPECT_EQ(deflateInit(&stream, Z_BEST_COMPRESSION), Z_OK);
    stream.next_out = reinterpret_cast<Bytef*>(output.data());
    stream.avail_out = static_cast<uInt>(output.size());
    while (count > 0) {
        const size_t part = std::min(count, step.size());
        count -= part;
        stream.next_in = const_cast<Bytef*>(step.data()); // the library's pointer is not const
        stream.avail_in = static_cast<uInt>(part);
        EXPECT_NE(deflate(&stream, count == 0 ? Z_FINISH : Z_NO_FLUSH), Z_STREAM_ERROR);
    }
    output.resize(stream.total_out);
    deflateEnd(&stream);
    return output;
}

// zlib ignores what follows its stream: the ratio becomes less.
std::string Padded(std::string deflated, size_t bytes) {
    deflated.resize(std::max(bytes, deflated.size()), 'p');
    return deflated;
}

RawBytes Zlib(uint64_t scope = 1) {
    return Master(id::kContentEncoding,
                  {RawUnsigned(id::kContentEncodingScope, scope), Master(id::kContentCompression, {})});
}

RawBytes Stripped(size_t bytes) {
    return Master(
        id::kContentEncoding,
        {Master(id::kContentCompression, {RawUnsigned(id::kContentCompAlgo, 3),
                                          RawElement(id::kContentCompSettings, RawBytes(bytes, uint8_t{'h'}), 4)})});
}

RawBytes Encodings(std::initializer_list<RawBytes> encodings) {
    return Master(id::kContentEncodings, encodings);
}

RawBytes Compressed(uint8_t number) {
    return TrackEntry(number, 2, "A_AC3", {Encodings({Zlib()})});
}

// H.264 with one byte in front of each unit: zeros become four times as many.
RawBytes ShortLengths(std::initializer_list<RawBytes> encodings) {
    return TrackEntry(
        1, 1, "V_MPEG4/ISO/AVC",
        {RawElement(id::kCodecPrivate, {1, 100, 0, 11, 0xfc, 0xe0, 0}), Master(id::kContentEncodings, encodings)});
}

std::string Laced(size_t frames, const std::string& content) {
    return static_cast<char>(frames - 1) + content;
}

std::vector<std::string> ProblemsOf(const RawBytes& file) {
    std::vector<std::string> problems;
    const auto reader =
        OpenMatroska(std::make_unique<CountingSource>(file, file.size(), std::make_shared<CountingSource::Counts>()));
    for (const source::StreamDescription& stream : reader->Streams()) {
        problems.push_back(stream.problem);
    }
    return problems;
}

TEST(HostileMatroska, ATrackThatIsCompressedTwiceIsRefused) {
    const RawBytes twice = ShortLengths({Zlib(), Zlib()});
    const RawBytes both = TrackEntry(2, 2, "A_AC3", {Encodings({Stripped(2), Zlib()})});
    const RawBytes file = FileOf({twice, both, Compressed(3)}, {Cluster(0, {SimpleBlock(1, 0, 0, "x")})});
    const auto problems = ProblemsOf(file);
    ASSERT_EQ(problems.size(), 3u);
    EXPECT_EQ(problems[0], "V_MPEG4/ISO/AVC: the track is compressed or encrypted more than once");
    EXPECT_EQ(problems[1], "A_AC3: the track is compressed or encrypted more than once");
    EXPECT_EQ(problems[2], "");
    EXPECT_EQ(CostOf(OpenMatroska, file).packets, 0u);
}

// Whole, with a packet above the ceiling, in tests/files/test_hostile_inputs.py.
TEST(HostileMatroska, LengthsThatBecomeWiderEndAtTheLargestPacket) {
    const Bytes zeros(1000); // each but the last, behind which nothing stands, becomes four bytes
    const auto wide = codecs::WidenLengths(zeros, 1, 4 * 999);
    ASSERT_TRUE(wide);
    EXPECT_EQ(wide->size(), size_t{4 * 999});
    EXPECT_FALSE(codecs::WidenLengths(zeros, 1, 4 * 999 - 1));
}

TEST(HostileMatroska, LengthsThatBecomeWiderAreKeptBelowIt) {
    const std::string frame = DeflatedZeros(100'000);
    const Cost cost =
        CostOf(OpenMatroska, FileOf({ShortLengths({Zlib()})}, {Cluster(0, {SimpleBlock(1, 0, 0, frame)})}));
    EXPECT_EQ(cost.packets, 1u);
    EXPECT_EQ(cost.packetBytes, 4u * 99'999);
    EXPECT_FALSE(cost.isDamaged);
}

TEST(HostileMatroska, WhatBecomesAThousandTimesAsLargeIsDamage) {
    const std::string bomb = DeflatedZeros(32 * kMiB);
    ASSERT_GT(32 * kMiB / bomb.size(), matroska::ContentDecoder::kMaxRatio);
    const Cost cost =
        CostOf(OpenMatroska, FileOf({Compressed(1)}, {Cluster(0, {SimpleBlock(1, 0, 0, bomb)}),
                                                      Cluster(1, {SimpleBlock(1, 0, 0, DeflatedZeros(100))})}));
    EXPECT_EQ(cost.packets, 1u);
    EXPECT_EQ(cost.packetBytes, 100u);
    EXPECT_TRUE(cost.isDamaged);
}

// An empty subtitle picture, a black picture: nothing compresses better, and nothing of it is near the limit.
TEST(HostileMatroska, SmallFramesOfOneAndTheSameByteAreKept) {
    for (const size_t size : {size_t{1}, size_t{1000}, size_t{64} * 1024, size_t{512} * 1024}) {
        const RawBytes file = FileOf({Compressed(1)}, {Cluster(0, {SimpleBlock(1, 0, 0, DeflatedZeros(size))})});
        const Cost cost = CostOf(OpenMatroska, file);
        EXPECT_EQ(cost.packetBytes, size);
        EXPECT_FALSE(cost.isDamaged) << size;
    }
}

TEST(HostileMatroska, TheFramesOfABlockShareWhatTheyMayBecome) {
    const std::string frame = Padded(DeflatedZeros(30 * kMiB), 40'000);
    const RawBytes file =
        FileOf({Compressed(1)}, {Cluster(0, {SimpleBlock(1, 0, kFixedLacing, Laced(4, frame + frame + frame + frame))}),
                                 Cluster(1, {SimpleBlock(1, 0, 0, "no deflate stream")})});
    const Cost cost = CostOf(OpenMatroska, file);
    EXPECT_EQ(cost.packets, 2u) << "64 MiB hold no third one";
    EXPECT_TRUE(cost.isDamaged);
}

TEST(HostileMatroska, FramesBelowTheRatioAreHeldToABoundOfTheWholeFile) {
    const std::string frame = Padded(DeflatedZeros(4 * kMiB), 5'000);
    RawBytes clusters;
    for (uint64_t i = 0; i < 200; ++i) {
        const RawBytes cluster = Cluster(i, {SimpleBlock(1, 0, 0, frame)});
        clusters.insert(clusters.end(), cluster.begin(), cluster.end());
    }
    const RawBytes file = FileOf({Compressed(1)}, {clusters});
    const Cost cost = CostOf(OpenMatroska, file); // the rule: 64 MiB and a hundred times the file
    EXPECT_GT(cost.packets, 16u);
    EXPECT_LT(cost.packets, 50u) << "of 800 MiB";
    EXPECT_TRUE(cost.isDamaged);
}

TEST(HostileMatroska, ATrackThatCompressesWellIsReadToItsEnd) {
    const std::string frame = Padded(DeflatedZeros(kMiB), 12'000); // 87 to 1
    RawBytes clusters;
    for (uint64_t i = 0; i < 150; ++i) {
        const RawBytes cluster = Cluster(i, {SimpleBlock(1, 0, 0, frame)});
        clusters.insert(clusters.end(), cluster.begin(), cluster.end());
    }
    const Cost cost = CostOf(OpenMatroska, FileOf({Compressed(1)}, {clusters}));
    EXPECT_EQ(cost.packets, 150u);
    EXPECT_FALSE(cost.isDamaged);
}

TEST(HostileMatroska, EachRunBeginsWithTheWholeBoundAgain) {
    const RawBytes file =
        FileOf({Compressed(1)}, {Cluster(0, {SimpleBlock(1, 0, 0, Padded(DeflatedZeros(50 * kMiB), 60'000))})});
    const auto reader =
        OpenMatroska(std::make_unique<CountingSource>(file, file.size(), std::make_shared<CountingSource::Counts>()));
    for (int run = 0; run < 3; ++run) {
        reader->Rewind();
        source::Packet packet;
        EXPECT_TRUE(reader->Next(packet)) << run;
    }
}

TEST(HostileMatroska, PrivateDataOfAllTracksShareWhatTheyMayBecome) {
    const RawBytes encodings = Encodings({Zlib(3)});
    const std::string header = Padded(DeflatedZeros(7 * kMiB), 8'000);
    const auto track = [&](uint8_t number) {
        return TrackEntry(number, 17, "S_TEXT/ASS", {RawElement(id::kCodecPrivate, Text(header), 4), encodings});
    };
    const RawBytes file = FileOf({track(1), track(2), track(3), track(4)}, {Cluster(0, {})});
    CostOf(OpenMatroska, file);
    const auto problems = ProblemsOf(file);
    EXPECT_EQ(problems[0], "");
    EXPECT_EQ(problems[1], "");
    EXPECT_EQ(problems[2], "S_TEXT/ASS: the codec private data is damaged");
    EXPECT_EQ(problems[3], "S_TEXT/ASS: the codec private data is damaged");
}

TEST(HostileMatroska, PrivateDataThatIsStoredAsItIsSharesOneBoundToo) {
    const RawBytes large(10 * kMiB, uint8_t{'p'});
    const auto track = [&](uint8_t number) {
        return TrackEntry(number, 17, "S_TEXT/ASS", {RawElement(id::kCodecPrivate, large, 4)});
    };
    const auto problems = ProblemsOf(FileOf({track(1), track(2)}, {Cluster(0, {})}));
    EXPECT_EQ(problems[0], "");
    EXPECT_EQ(problems[1], "S_TEXT/ASS: the codec private data is damaged or too large");
}

TEST(HostileMatroska, AStrippedHeaderIsAFewBytesLong) {
    const auto track = [](uint8_t number, size_t bytes) {
        return TrackEntry(number, 2, "A_AC3", {Encodings({Stripped(bytes)})});
    };
    const auto problems = ProblemsOf(FileOf({track(1, 65'536), track(2, 1024)}, {Cluster(0, {})}));
    EXPECT_EQ(problems[0], "A_AC3: the header that was stripped off its frames is too long");
    EXPECT_EQ(problems[1], "");
}

TEST(HostileMatroska, EmptyFramesDoNotMultiplyAStrippedHeader) {
    const RawBytes track = TrackEntry(1, 2, "A_AC3", {Encodings({Stripped(900)})});
    RawBytes blocks;
    for (int16_t i = 0; i < 200; ++i) {
        const RawBytes block = SimpleBlock(1, i, kFixedLacing, Laced(256, ""));
        blocks.insert(blocks.end(), block.begin(), block.end());
    }
    const Cost cost = CostOf(OpenMatroska, FileOf({track}, {Cluster(0, {blocks})}));
    EXPECT_LE(cost.packets, 200u) << "one of a block of 256";
    EXPECT_TRUE(cost.isDamaged);
}

TEST(HostileMatroska, FramesThatWaitForTheNextBlockDoNotFillTheMemory) {
    matroska::FrameQueue queue(0);
    const auto frames = [] {
        std::vector<source::Packet> two(2);
        two[0].data.resize(4 * kMiB);
        two[1].data.resize(4 * kMiB);
        return two;
    };
    constexpr size_t kStreams = 20;
    for (size_t i = 0; i < kStreams; ++i) {
        queue.AddStream(false, 0);
    }
    source::Packet packet;
    for (size_t i = 0; i < 8; ++i) {
        queue.Add(i, 0, {}, frames());
        EXPECT_FALSE(queue.Take(packet)) << "64 MiB may wait";
    }
    queue.Add(8, 0, {}, frames());
    int given = 0;
    while (queue.Take(packet)) {
        ++given;
    }
    EXPECT_EQ(given, 18) << "more may not";
    queue.Add(9, 0, {}, frames());
    EXPECT_FALSE(queue.Take(packet)) << "none waits any longer, so others may";
}

TEST(HostileMatroska, AnAttachmentLongerThanItsParentIsNamed) {
    RawBytes data = RawText(id::kFileData, "short");
    data[2] = 0x8f; // fifteen bytes, of which there are five
    const RawBytes attachments =
        Master(id::kAttachments,
               {Master(id::kAttachedFile, {RawText(id::kFileName, "lost.txt"), data}),
                Master(id::kAttachedFile, {RawText(id::kFileName, "none.txt")}),
                Master(id::kAttachedFile, {RawText(id::kFileName, "kept.txt"), RawText(id::kFileData, "kept")})});
    const RawBytes file = FileOf({Compressed(1)}, {attachments});
    auto bytes = std::make_unique<CountingSource>(file, file.size(), std::make_shared<CountingSource::Counts>());
    auto head = matroska::ReadMatroskaFile(*bytes);
    ASSERT_TRUE(head);
    const matroska::MatroskaReader reader(std::move(bytes), std::move(*head));
    std::vector<std::string> leftOut;
    const auto kept = reader.ReadAttachments(leftOut);
    EXPECT_THAT(leftOut, testing::ElementsAre("lost.txt", "none.txt"));
    ASSERT_EQ(kept.size(), 1u);
    EXPECT_EQ(kept[0].fileName, "kept.txt");
    EXPECT_FALSE(reader.LacksAttachments());
}

TEST(HostileMatroska, AttachmentsThatCannotBeFoundAreTold) {
    RawBytes attached = Master(id::kAttachedFile, {RawText(id::kFileName, "a.txt"), RawText(id::kFileData, "a")});
    attached[8] = 0x20; // 8 KiB longer than all attachments
    const RawBytes file = FileOf({Compressed(1)}, {Master(id::kAttachments, {attached})});
    auto bytes = std::make_unique<CountingSource>(file, file.size(), std::make_shared<CountingSource::Counts>());
    auto head = matroska::ReadMatroskaFile(*bytes);
    ASSERT_TRUE(head);
    EXPECT_TRUE(matroska::MatroskaReader(std::move(bytes), std::move(*head)).LacksAttachments());
}

} // namespace
} // namespace test_hostile
