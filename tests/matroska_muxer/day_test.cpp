// A day of recording, as fast as it goes: each block is compared with what was delivered while the file is written.
// QRX_DAY_HOURS makes it as long as it says, with pictures of the sizes that a camera has.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <unordered_set>

#include "tests/matroska_muxer/muxer_rig.h"
#include "tests/matroska_muxer/recorded_day.h"
#include "tests/matroska_muxer/watched_stream.h"
#include "tests/support/hex_bytes.h"
#include "tests/support/pin_lookup.h"
#include "tests/support/watchdog.h"

#ifndef QRX_NATIVE
#include <psapi.h>
#endif

using namespace test_support;

namespace {

constexpr UINT64 kLeadSeconds = 30; // of the recorder before the file
constexpr UINT64 kStallSeconds = 20;
constexpr INT64 kNsPerMs = 1000000;
constexpr INT64 kTicksPerMs = 10000;
constexpr INT64 kTicksPerSecond = 10000000;
constexpr int kMostComplaints = 20;
constexpr UINT32 kMostBytes = 200000; // of one packet

// What the file must hold, block by block.
class DayCheck {
  public:
    explicit DayCheck(const RecordedDay& day) : m_day(day) {}

    void Take(ByteView bytes, UINT64 offset) {
        const EbmlTree tree = ReadEbml(bytes);
        Expect(tree.elements.size() == 1 && tree.cuts.empty(), "an element is damaged");
        const EbmlElement& element = tree.elements.front();
        if (element.id == ebml_id::kCluster) {
            m_clusters.insert(offset);
            TakeCluster(bytes, element);
        } else if (element.id == ebml_id::kCues) {
            TakeCues(bytes, element);
        }
    }

    // Everything was there, and picture and sound lie as far apart at the end as at the beginning.
    void Finish(const WatchedStream& stream, UINT64 seconds) {
        for (Track& track : m_tracks) {
            EXPECT_EQ(nullptr, track.cursor.Next()) << "packets are missing";
            EXPECT_GT(track.blocks, 0u);
        }
        const Track& picture = m_tracks[0];
        const Track& sound = m_tracks[1];
        EXPECT_EQ(picture.firstMs, sound.firstMs);
        EXPECT_NEAR(static_cast<double>(picture.endMs), static_cast<double>(sound.endMs), 1.0);
        EXPECT_EQ(m_keyframes + m_tracks[2].blocks, m_cuePositions.size());
        for (const UINT64 position : m_cuePositions) {
            Expect(m_clusters.contains(stream.SegmentData() + position), "a cue leads to no cluster");
        }
        CheckHead(stream, seconds);
    }

  private:
    struct Track {
        DayCursor cursor;
        UINT64 blocks = 0;
        INT64 firstMs = -1;
        INT64 lastMs = 0;
        INT64 endMs = 0;
    };

    void Expect(bool isTrue, const char* complaint) {
        if (!isTrue && m_complaints++ < kMostComplaints) {
            ADD_FAILURE() << complaint << ", block " << m_tracks[0].blocks << "/" << m_tracks[1].blocks << "/"
                          << m_tracks[2].blocks;
        }
    }

    void TakeCluster(ByteView file, const EbmlElement& cluster) {
        const EbmlElement* const timestamp = cluster.Child(ebml_id::kTimestamp);
        const auto clusterMs = timestamp == nullptr ? std::nullopt : UnsignedOf(file, *timestamp);
        Expect(clusterMs.has_value(), "a cluster without a time");
        for (const EbmlElement& child : cluster.children) {
            if (child.id == ebml_id::kSimpleBlock) {
                TakeBlock(DataOf(file, child), clusterMs.value_or(0), std::nullopt);
            } else if (child.id == ebml_id::kBlockGroup) {
                const EbmlElement* const block = child.Child(ebml_id::kBlock);
                const EbmlElement* const duration = child.Child(ebml_id::kBlockDuration);
                Expect(block != nullptr && duration != nullptr, "a block group without block or duration");
                if (block != nullptr && duration != nullptr) {
                    TakeBlock(DataOf(file, *block), clusterMs.value_or(0), UnsignedOf(file, *duration));
                }
            }
        }
    }

    void TakeBlock(ByteView data, UINT64 clusterMs, std::optional<UINT64> durationMs) {
        std::string lacing;
        const auto block = ReadBlock(data, lacing);
        Expect(block && block->frames.size() == 1 && block->track >= 1 && block->track <= 3, "no block of one frame");
        if (!block || block->frames.size() != 1 || block->track < 1 || block->track > 3) {
            return;
        }
        Track& track = m_tracks[block->track - 1];
        ++track.blocks;
        const DayPacket* const packet = track.cursor.Next();
        Expect(packet != nullptr, "a block too many");
        if (packet != nullptr) {
            Compare(*block, *packet, static_cast<INT64>(clusterMs), durationMs, track);
        }
    }

    void Compare(const LayoutBlock& block, const DayPacket& packet, INT64 clusterMs, std::optional<UINT64> durationMs,
                 Track& track) {
        const ByteView frame = block.frames.front();
        UINT64 number = 0;
        std::memcpy(&number, frame.data(), std::min(sizeof(number), frame.size()));
        Expect(number == packet.number && frame.size() == packet.size, "another packet than was delivered next");
        // A block's time is its distance from the cluster's, cut to whole milliseconds.
        const INT64 relativeMs = (packet.start * 100 - clusterMs * kNsPerMs) / kNsPerMs;
        Expect(block.relativeTime == relativeMs, "another time than was delivered");
        if (block.track == 3) {
            Expect(durationMs == static_cast<UINT64>((packet.stop - packet.start) / kTicksPerMs), "another duration");
        } else {
            Expect(((block.flags & 0x80) != 0) == packet.keyframe, "another keyframe flag");
        }
        m_keyframes += block.track == 1 && packet.keyframe ? 1 : 0;
        track.lastMs = clusterMs + block.relativeTime;
        track.firstMs = track.firstMs < 0 ? track.lastMs : track.firstMs;
        track.endMs = std::max(track.endMs, packet.stop / kTicksPerMs);
        if (block.track != 3 && m_tracks[0].blocks > 0 && m_tracks[1].blocks > 0 &&
            !m_day.IsDisturbed(track.cursor.Second(), kLeadSeconds)) {
            Expect(std::abs(m_tracks[0].lastMs - m_tracks[1].lastMs) < 1000, "picture and sound are not in order");
        }
    }

    void TakeCues(ByteView file, const EbmlElement& cues) {
        for (const EbmlElement* const point : cues.Children(ebml_id::kCuePoint)) {
            const EbmlElement* const where = point->Child(ebml_id::kCueTrackPositions);
            const EbmlElement* const position = where == nullptr ? nullptr : where->Child(ebml_id::kCueClusterPosition);
            Expect(position != nullptr, "a cue without a position");
            if (position != nullptr) {
                m_cuePositions.push_back(UnsignedOf(file, *position).value_or(0));
            }
        }
    }

    // The head as it was patched when the run was stopped. A Segment of 32 GiB keeps the unknown size.
    static void CheckHead(const WatchedStream& stream, UINT64 seconds) {
        const EbmlTree head = ReadEbml(stream.Head());
        const EbmlElement* const segment = head.Child(ebml_id::kSegment);
        ASSERT_NE(nullptr, segment);
        const EbmlElement* const info = segment->Child(ebml_id::kInfo);
        ASSERT_NE(nullptr, info);
        const EbmlElement* const duration = info->Child(ebml_id::kDuration);
        ASSERT_NE(nullptr, duration);
        EXPECT_EQ(static_cast<double>(seconds) * 1000.0, FloatOf(stream.Head(), *duration).value_or(-1));
        const UINT64 dataBytes = stream.Size() - stream.SegmentData();
        const auto size = ReadEbmlSize(stream.Head().subspan(segment->offset + segment->idLength));
        ASSERT_TRUE(size);
        EXPECT_EQ(dataBytes > UINT64{0x7fffffffe}, size->allOnes);
        EXPECT_TRUE(size->allOnes || size->value == dataBytes);
    }

    const RecordedDay& m_day;
    Track m_tracks[3] = {{DayCursor(m_day, DayTrack::Picture)},
                         {DayCursor(m_day, DayTrack::Sound)},
                         {DayCursor(m_day, DayTrack::Subtitle)}};
    std::unordered_set<UINT64> m_clusters;
    std::vector<UINT64> m_cuePositions;
    UINT64 m_keyframes = 0;
    int m_complaints = 0;
};

// What the process holds; nothing where a sanitizer holds memory of its own.
size_t HeldBytes() {
#ifdef QRX_NATIVE
    return 0;
#else
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof(counters);
    EXPECT_TRUE(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)));
    return counters.WorkingSetSize;
#endif
}

class Recorder {
  public:
    Recorder(MuxerRig& rig, WatchedStream& stream, const RecordedDay& day) : m_rig(rig), m_stream(stream), m_day(day) {}

    // Picture, sound and subtitles, each into an input of its own.
    void Record() {
        for (UINT64 second = 0; second < m_day.Shape().seconds; ++second) {
            HandleStall(second);
            ASSERT_TRUE(WaitForTheFile(second)) << "nothing was written behind second " << second;
            for (size_t track = 0; track < std::size(kDayTracks); ++track) {
                Deliver(track, second);
            }
            if (second == m_day.Shape().seconds / 20) {
                m_heldBefore = HeldBytes();
            }
        }
        m_heldAfter = HeldBytes();
    }
    [[nodiscard]] UINT64 Packets() const { return m_packets; }
    // How much more the process holds at the end than near the beginning.
    [[nodiscard]] INT64 HeldMore() const { return static_cast<INT64>(m_heldAfter) - static_cast<INT64>(m_heldBefore); }

  private:
    void Deliver(size_t track, UINT64 second) {
        for (const DayPacket& packet : m_day.PacketsOf(kDayTracks[track], second)) {
            std::vector<BYTE> bytes(packet.size, 0x65);
            std::memcpy(bytes.data(), &packet.number, sizeof(packet.number));
            ASSERT_EQ(S_OK, m_rig.Input(track).Deliver(std::move(bytes), packet.start, packet.stop, packet.keyframe));
            ++m_packets;
        }
    }
    void HandleStall(UINT64 second) {
        const UINT64 stallAt = m_day.Shape().stallAt;
        if (second == stallAt) {
            m_stream.Hold();
        }
        if (second == stallAt + kStallSeconds) {
            EXPECT_TRUE(m_stream.WaitUntilHeld());
            m_stream.LetGo();
        }
    }
    [[nodiscard]] bool WaitForTheFile(UINT64 second) {
        const UINT64 stallAt = m_day.Shape().stallAt;
        if (second >= stallAt && second < stallAt + kStallSeconds) {
            return true; // nothing is written meanwhile; the queues take it
        }
        const INT64 needed = m_day.EndBefore(second) - static_cast<INT64>(kLeadSeconds) * kTicksPerSecond;
        const auto deadline = std::chrono::steady_clock::now() + kWatchdog;
        while (Position() < needed) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
    [[nodiscard]] INT64 Position() const {
        VARIANT value{};
        EXPECT_EQ(S_OK, m_rig.Config()->GetValue(&MKVMUX_Position, &value));
        return V_I8(&value);
    }

    MuxerRig& m_rig;
    WatchedStream& m_stream;
    const RecordedDay& m_day;
    UINT64 m_packets = 0;
    size_t m_heldBefore = 0;
    size_t m_heldAfter = 0;
};

void ConnectTracks(MuxerRig& rig) {
    const auto sets = mkv_test::LengthPrefixed(
        {mkv_test::FromHex("6764000bacd942c4ec0440000003004000000c83c50a6580"), mkv_test::FromHex("68ebe3cb22c0")});
    ASSERT_EQ(S_OK, rig.ConnectInput(Mpeg2VideoType(mediasubtype::kAvc1, {}, sets, 100, 11, 4)));
    ASSERT_EQ(S_OK, rig.ConnectInput(WaveType(mediasubtype::kRawAac, {}, {0x11, 0x90})));
    ASSERT_EQ(S_OK, rig.ConnectInput(SubtitleType(mediasubtype::kUtf8)));
}

void RecordAndCheck(const DayShape& shape) {
    ASSERT_LE(std::max(shape.pictureBytes, shape.keyframeBytes), kMostBytes);
    const RecordedDay day(shape);
    DayCheck check(day);
    WatchedStream stream([&check](ByteView bytes, UINT64 offset) { check.Take(bytes, offset); });
    FakeSinkPin sink(stream);
    MuxerRig rig;
    ASSERT_EQ(S_OK, PinNamed(rig.Filter(), OLESTR("Out"))->Connect(&sink, nullptr));
    ConnectTracks(rig);
    Recorder recorder(rig, stream, day);
    ASSERT_EQ(S_OK, rig.Pause());
    recorder.Record();
    for (size_t track = 0; track < std::size(kDayTracks); ++track) {
        EXPECT_EQ(S_OK, rig.Input(track).DeliverEndOfStream());
    }
    EXPECT_TRUE(sink.WaitForEndOfStream(kWatchdog));
    ASSERT_EQ(S_OK, rig.Stop());
    sink.Unplug();
    check.Finish(stream, static_cast<UINT64>(day.EndBefore(shape.seconds) / kTicksPerSecond));
    EXPECT_EQ(0, stream.References());
    // What is kept for each keyframe, and what the queues hold at one time and not at another.
    EXPECT_LT(recorder.HeldMore(), (INT64{64} << 20) + static_cast<INT64>(shape.seconds) * 64);
    std::printf("%llu packets, %llu bytes, %lld bytes more held at the end\n",
                static_cast<unsigned long long>(recorder.Packets()), static_cast<unsigned long long>(stream.Size()),
                static_cast<long long>(recorder.HeldMore()));
}

TEST(Day, TenMinutesWithAllThatCanHappenInADay) {
    RecordAndCheck(ShapeOf(600, 40, 300));
}

TEST(Day, AsManyHoursAsAreAskedFor) {
    const char* const hours = std::getenv("QRX_DAY_HOURS");
    const UINT64 seconds = hours == nullptr ? 8 * 60 : std::strtoull(hours, nullptr, 10) * 3600;
    ASSERT_GT(seconds, 0u);
    RecordAndCheck(ShapeOf(seconds, 16000, 60000)); // a day of it is more than 32 GiB
}

} // namespace
