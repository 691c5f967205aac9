// Clusters that cannot be written: what was to be in them is lost, and nothing else.
#include <gtest/gtest.h>

#include <stdexcept>

#include "mkv/cluster_writer.h"
#include "mkv/matroska_file.h"
#include "mkv/mkv_cues.h"
#include "tests/support/media_types.h"

namespace {

// An output that throws at its nth call, as no stream does, but a library underneath might.
class ThrowingOutput : public mkv::CFileOutput {
  public:
    explicit ThrowingOutput(int callsUntil) : m_callsUntil(callsUntil) {}
    uint32 read(void*, size_t) override { return 0; }
    void setFilePointer(int64 offset, libebml::seek_mode) override {
        count();
        m_position = static_cast<uint64>(offset);
    }
    size_t write(const void*, size_t size) override {
        count();
        m_position += size;
        m_writtenBytes += size;
        return size;
    }
    uint64 getFilePointer() override {
        count();
        return m_position;
    }
    void close() override {}

    [[nodiscard]] uint64 writtenBytes() const { return m_writtenBytes; }

  private:
    void count() {
        if (--m_callsUntil == 0) {
            throw std::runtime_error("the output is gone");
        }
    }

    int m_callsUntil;
    uint64 m_position = 0;
    uint64 m_writtenBytes = 0;
};

class LostClusterTest : public testing::Test {
  protected:
    LostClusterTest() {
        m_tracks.push_back({CMediaType(test_support::VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd')).Get()),
                            records::CTrackSettingsRow(0)});
    }

    static mkv::Packet Packet(INT64 ms) {
        static const BYTE s_payload[] = {1, 2, 3};
        return {ms * 10000, (ms + 40) * 10000, s_payload, sizeof(s_payload), true, 0, false};
    }

    mkv::TrackList m_tracks;
};

// The seek to the file's start and one write for each of the two gathered parts of the head; a cluster takes one write.
constexpr int kCallsOfTheHead = 3;

TEST_F(LostClusterTest, IsDroppedNeverRenderedAgainAndTheNextPacketOpensAnother) {
    ThrowingOutput output(kCallsOfTheHead + 1);
    mkv::CMatroskaFile file(output);
    file.writeHead(mkv::DocType::matroska);
    file.writeTracks(m_tracks);
    file.startFirstCluster();
    const auto headBytes = output.writtenBytes();
    (void)file.clusters().addFrameToCurrentCluster(Packet(0));
    EXPECT_THROW((void)file.clusters().addFrameToCurrentCluster(Packet(40)), std::runtime_error);
    EXPECT_EQ(output.writtenBytes(), headBytes);
    (void)file.clusters().addFrameToCurrentCluster(Packet(80));
    file.clusters().flushCluster();
    const auto clusterEnd = output.writtenBytes();
    EXPECT_GT(clusterEnd, headBytes);
    file.clusters().flushCluster(); // there is none any more
    EXPECT_EQ(output.writtenBytes(), clusterEnd);
}

// A cluster with large payloads that it took over takes a write for each of them, and one for what stands in front.
TEST_F(LostClusterTest, IsDroppedWhicheverOfItsWritesFails) {
    constexpr int kPayloads = 3;
    constexpr size_t kLarge = mkv::CClusterBytes::kMinTakenOverBytes;
    for (int call = 1; call <= 2 * kPayloads; ++call) {
        ThrowingOutput output(kCallsOfTheHead + call);
        mkv::CMatroskaFile file(output);
        file.writeHead(mkv::DocType::matroska);
        file.writeTracks(m_tracks);
        file.startFirstCluster();
        for (INT64 i = 0; i < kPayloads; ++i) {
            auto owner = win::OwnedBytes(std::make_unique<BYTE[]>(kLarge));
            mkv::Packet packet{i * 10000, 0, owner.get(), kLarge, false, 0, false};
            packet.owned = &owner;
            (void)file.clusters().addFrameToCurrentCluster(packet);
            EXPECT_EQ(owner, nullptr);
        }
        EXPECT_THROW((void)file.clusters().addFrameToCurrentCluster(Packet(40)), std::runtime_error) << call;
        const auto lostBytes = output.writtenBytes();
        (void)file.clusters().addFrameToCurrentCluster(Packet(80));
        file.clusters().flushCluster();
        EXPECT_GT(output.writtenBytes(), lostBytes) << call;
        EXPECT_LT(output.writtenBytes(), lostBytes + 100) << call << ": the lost one is gone";
    }
}

TEST_F(LostClusterTest, AFailureInTheLastClusterReachesTheCallerAndClosingAgainFinalises) {
    ThrowingOutput output(kCallsOfTheHead + 1);
    mkv::CMatroskaFile file(output);
    file.writeHead(mkv::DocType::matroska);
    file.writeTracks(m_tracks);
    file.startFirstCluster();
    (void)file.clusters().addFrameToCurrentCluster(Packet(0));
    EXPECT_THROW(file.finalise(0.0), std::runtime_error);
    EXPECT_NO_THROW(file.finalise(0.0));
}

TEST_F(LostClusterTest, ALostClustersCuePointsAreForgotten) {
    ThrowingOutput output(4); // the look at the position, the head, a cluster, and the one that fails
    mkv::CGatheringIO gathering(output);
    libmatroska::KaxSegment segment;
    segment.WriteHead(gathering, 5);
    gathering.flush();
    mkv::CMkvCues cues;
    cues.SetGlobalTimecodeScale(1000000);
    libmatroska::KaxTrackEntry entry;
    entry.SetGlobalTimecodeScale(1000000);
    libebml::GetChild<libmatroska::KaxTrackNumber>(entry).SetValue(1);
    mkv::CClusterWriter clusters(gathering, segment, cues);
    clusters.setTracks(m_tracks, {&entry}, 0);
    clusters.startCluster(0);
    (void)clusters.addFrameToCurrentCluster(Packet(0));
    clusters.flushCluster();
    EXPECT_EQ(cues.pointCount(), 1u);
    EXPECT_EQ(cues.ListSize(), 0u) << "a recording of hours keeps numbers, not elements";
    (void)clusters.addFrameToCurrentCluster(Packet(40));
    EXPECT_THROW(clusters.flushCluster(), std::runtime_error);
    EXPECT_EQ(cues.pointCount(), 1u);
    mkv::CMkvCues first;
    first.announce(0, 1);
    first.keepAnnounced(0);
    EXPECT_EQ(cues.UpdateSize(), first.UpdateSize());
}

} // namespace
