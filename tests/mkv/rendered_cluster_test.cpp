// The writer renders clusters itself. libmatroska says how: the same clusters go both ways, and the bytes and the cue
// points are compared.
#include <gtest/gtest.h>

#include <map>
#include <random>

#include <matroska/KaxSegment.h>
#include <matroska/KaxTracks.h>

#include "mkv/mkv_cues.h"
#include "mkv/mkv_io.h"
#include "mkv/open_cluster.h"
#include "tests/mkv/library_cluster.h"
#include "tests/support/memory_stream.h"

namespace {

using Bytes = std::vector<BYTE>;
using mkv_test::LibraryCluster;

constexpr UINT64 kMs = mkv::kTimecodeScaleNs;

struct Block {
    UINT16 track = 1;
    mkv::BlockTimes times;
    Bytes frame;
    bool isGroup = false;
    bool isKeyframe = false;
    bool isCuePoint = false;
    bool isOwned = false;
};

struct Cluster {
    UINT64 startNs = 0;
    std::vector<Block> blocks;
};

mkv::BlockTimes Times(UINT64 timeNs, UINT64 durationNs = 0) {
    return {timeNs, durationNs, timeNs + durationNs};
}

// An output that starts with a segment's head, and cues that are rendered behind the clusters.
struct Output {
    Output() {
        io.setStream(&stream);
        segment.WriteHead(gathering, 5);
        gathering.flush();
    }

    test_support::MemoryStream stream;
    CMkvIO io;
    mkv::CGatheringIO gathering{io};
    libmatroska::KaxSegment segment;
};

class RenderedClusterTest : public testing::Test {
  protected:
    // The library's bytes of the clusters and their cues.
    Bytes ByTheLibrary(std::vector<Cluster> clusters) {
        Output output;
        libmatroska::KaxCues cues;
        cues.SetGlobalTimecodeScale(kMs);
        for (Cluster& cluster : clusters) {
            LibraryCluster rendered(output.segment, cluster.startNs);
            for (Block& block : cluster.blocks) {
                auto& track = Track(block.track);
                const auto& blob = block.isGroup
                                       ? rendered.AddGroup(track, block.times, block.frame)
                                       : rendered.AddSimple(track, block.times.timeNs, block.frame, block.isKeyframe);
                if (block.isCuePoint) {
                    cues.AddBlockBlob(blob);
                }
            }
            rendered.Render(output.gathering, cues);
        }
        if (cues.ListSize() > 0) {
            cues.Render(output.gathering, false);
        }
        output.gathering.flush();
        return output.stream.Bytes();
    }

    // The writer's; the same open cluster and cues for all of them.
    static Bytes ByTheWriter(const std::vector<Cluster>& clusters) {
        Output output;
        mkv::CMkvCues cues;
        cues.SetGlobalTimecodeScale(kMs);
        mkv::COpenCluster open;
        for (const Cluster& cluster : clusters) {
            open.start(cluster.startNs);
            for (const Block& block : cluster.blocks) {
                Add(open, block);
                if (block.isCuePoint) {
                    cues.announce(block.times.timeNs, block.track);
                }
            }
            const auto position = output.segment.GetRelativePosition(output.gathering.getFilePointer());
            open.write(output.gathering);
            cues.keepAnnounced(position);
        }
        if (cues.pointCount() > 0) {
            cues.Render(output.gathering, false);
        }
        output.gathering.flush();
        return output.stream.Bytes();
    }

    static void Add(mkv::COpenCluster& open, const Block& block) {
        win::OwnedBytes owner;
        mkv::FrameBytes frame{block.frame};
        if (block.isOwned) {
            owner = std::make_unique<BYTE[]>(block.frame.size());
            std::copy(block.frame.begin(), block.frame.end(), owner.get());
            frame = {{owner.get(), block.frame.size()}, &owner};
        }
        if (block.isGroup) {
            open.addBlockGroup(block.track, block.times, frame);
        } else {
            open.addSimpleBlock(block.track, block.times.timeNs, frame, block.isKeyframe);
        }
        if (owner) { // not taken over: whoever holds it may change it
            std::fill_n(owner.get(), block.frame.size(), BYTE{0xee});
        }
    }

    void ExpectTheSame(const std::vector<Cluster>& clusters) {
        const Bytes expected = ByTheLibrary(clusters);
        const Bytes actual = ByTheWriter(clusters);
        ASSERT_EQ(actual.size(), expected.size());
        const auto [a, e] = std::mismatch(actual.begin(), actual.end(), expected.begin());
        ASSERT_TRUE(a == actual.end()) << "at " << a - actual.begin() << ": " << int{*a} << ", not " << int{*e};
    }

    libmatroska::KaxTrackEntry& Track(UINT16 number) {
        auto& entry = m_tracks[number];
        if (!entry) {
            entry = std::make_unique<libmatroska::KaxTrackEntry>();
            entry->SetGlobalTimecodeScale(kMs);
            libebml::GetChild<libmatroska::KaxTrackNumber>(*entry).SetValue(number);
        }
        return *entry;
    }

    std::map<UINT16, std::unique_ptr<libmatroska::KaxTrackEntry>> m_tracks;
};

TEST_F(RenderedClusterTest, EmptyClustersOfEveryLengthOfTime) {
    std::vector<Cluster> clusters{{0, {}}};
    for (UINT64 ms = 1; ms < UINT64{1} << 43; ms <<= 1) { // as far as nanoseconds reach
        for (const UINT64 time : {ms - 1, ms, ms + 1}) {
            clusters.push_back({time * kMs + ms % kMs, {}});
        }
    }
    ExpectTheSame(clusters);
}

TEST_F(RenderedClusterTest, PayloadsAroundEachLengthOfASizeField) {
    for (const size_t boundary : {size_t{127}, size_t{16383}, size_t{2097151}}) {
        for (size_t size = boundary - 26; size < boundary + 4; ++size) {
            for (const bool isGroup : {false, true}) {
                for (const UINT16 track : {UINT16{1}, UINT16{200}}) {
                    const Block block{.track = track, .times = Times(0), .frame = Bytes(size, 7), .isGroup = isGroup};
                    ASSERT_NO_FATAL_FAILURE(ExpectTheSame({{0, {block}}})) << size;
                }
            }
        }
    }
}

TEST_F(RenderedClusterTest, ASizeFieldOfFiveBytes) {
    const Block block{.times = Times(0), .frame = Bytes((size_t{1} << 28) - 5, 7), .isGroup = true};
    ExpectTheSame({{0, {block}}});
}

TEST_F(RenderedClusterTest, TrackNumbersOfOneAndTwoBytes) {
    Cluster cluster;
    for (const UINT16 track : std::initializer_list<UINT16>{1, 2, 126, 127, 128, 129, 255, 256, 0x3ffe, 0x3fff}) {
        for (const bool isGroup : {false, true}) {
            cluster.blocks.push_back(
                {.track = track, .times = Times(0), .frame = {1}, .isGroup = isGroup, .isCuePoint = true});
        }
    }
    ExpectTheSame({cluster});
}

TEST_F(RenderedClusterTest, EveryKindOfBlockAndFlag) {
    Cluster cluster;
    for (unsigned kind = 0; kind < 16; ++kind) {
        cluster.blocks.push_back({.times = Times(kind * kMs, kMs),
                                  .frame = {static_cast<BYTE>(kind)},
                                  .isGroup = (kind & 1) != 0,
                                  .isKeyframe = (kind & 2) != 0,
                                  .isCuePoint = (kind & 4) != 0,
                                  .isOwned = (kind & 8) != 0});
    }
    ExpectTheSame({cluster});
}

// Truncated towards zero, from a cluster's time that is itself truncated.
TEST_F(RenderedClusterTest, OffsetsOnBothSidesOfTheClustersTime) {
    constexpr UINT64 kStartNs = 100000 * kMs + kMs / 2;
    Cluster cluster{kStartNs, {}};
    for (const INT64 ns :
         {INT64{0}, INT64{1}, INT64{499999}, INT64{500000}, INT64{999999}, INT64{1000000}, INT64{1000001},
          INT64{255000000}, INT64{256000000}, INT64{32767000000}, INT64{32767499999}}) {
        for (const UINT64 timeNs : {kStartNs + static_cast<UINT64>(ns), kStartNs - static_cast<UINT64>(ns)}) {
            cluster.blocks.push_back({.times = Times(timeNs), .frame = {1}});
            cluster.blocks.push_back({.times = Times(timeNs), .frame = {1}, .isGroup = true, .isCuePoint = true});
        }
    }
    cluster.blocks.push_back({.times = Times(100000 * kMs - 32768 * kMs), .frame = {1}}); // the earliest
    ExpectTheSame({cluster});
}

TEST_F(RenderedClusterTest, DurationsOfEveryLength) {
    Cluster cluster;
    for (UINT64 ms = 1; ms < UINT64{1} << 43; ms <<= 1) {
        for (const UINT64 duration : {ms - 1, ms, ms + 1}) {
            cluster.blocks.push_back({.times = Times(0, duration * kMs + ms % kMs), .frame = {1}, .isGroup = true});
        }
    }
    ExpectTheSame({cluster});
}

size_t RandomSize(std::mt19937& random) {
    switch (random() % 8) {
    case 0:
        return random() % 70000;
    case 1:
        return mkv::CClusterBytes::kMinTakenOverBytes - 2 + random() % 4;
    case 2:
        return 100 + random() % 40;
    default:
        return 1 + random() % 600;
    }
}

Block RandomBlock(std::mt19937& random, UINT64 clusterNs) {
    constexpr INT64 kReachNs = 32767 * INT64{kMs};
    const INT64 offset = static_cast<INT64>(random() * UINT64{16}) % kReachNs * (random() % 2 == 0 ? -1 : 1);
    Block block;
    block.track = static_cast<UINT16>(random() % 4 == 0 ? 1 + random() % 0x3fff : 1 + random() % 130);
    block.times = Times(clusterNs + static_cast<UINT64>(offset), random() % 4000 * kMs);
    block.frame.resize(RandomSize(random) + 1);
    std::generate(block.frame.begin(), block.frame.end(), [&random] { return static_cast<BYTE>(random()); });
    block.isGroup = random() % 3 == 0;
    block.isKeyframe = random() % 2 == 0;
    block.isCuePoint = random() % 3 == 0;
    block.isOwned = random() % 2 == 0;
    return block;
}

TEST_F(RenderedClusterTest, RandomClustersAndTheirCuePoints) {
    for (unsigned seed = 0; seed < 60; ++seed) {
        std::mt19937 random(seed);
        std::vector<Cluster> clusters(1 + random() % 6);
        for (Cluster& cluster : clusters) {
            cluster.startNs = 40000 * kMs + (UINT64{random()} << (random() % 20));
            for (size_t blocks = random() % 30; blocks > 0; --blocks) {
                cluster.blocks.push_back(RandomBlock(random, cluster.startNs));
            }
        }
        ASSERT_NO_FATAL_FAILURE(ExpectTheSame(clusters)) << "seed " << seed;
    }
}

} // namespace
