// Clusters that leave in several writes, since they hold large payloads, on outputs that fail in the middle of one.
#include <algorithm>

#include "tests/mkv/writer_fixture.h"

namespace {

using test_support::StreamOperation;

constexpr size_t kLarge = mkv::CClusterBytes::kMinTakenOverBytes;
constexpr int kClusters = 4;
constexpr int kFramesPerCluster = 3;

class LargeClusterFailuresTest : public WriterTest {
  protected:
    void WriteOwned(UINT32 stream, INT64 ms, bool syncPoint, BYTE content) {
        auto owner = win::OwnedBytes(std::make_unique<BYTE[]>(kLarge));
        std::fill_n(owner.get(), kLarge, content);
        mkv::Packet packet{ms * kMs, (ms + 40) * kMs, owner.get(), kLarge, syncPoint, stream, false};
        packet.owned = &owner;
        m_writer.WritePacket(packet);
    }

    // Each frame holds the number of its cluster.
    void WriteClusters() {
        for (int frame = 0; frame < kClusters * kFramesPerCluster; ++frame) {
            WriteOwned(0, frame * 40, frame % kFramesPerCluster == 0, static_cast<BYTE>(frame / kFramesPerCluster));
        }
    }

    // The clusters of the file, by what their frames hold.
    std::vector<int> ClustersThere() {
        std::vector<int> there;
        for (const auto& cluster : File().clusters) {
            EXPECT_EQ(cluster.blocks.size(), size_t{kFramesPerCluster});
            for (const auto& block : cluster.blocks) {
                const auto frame = block.frames.at(0);
                EXPECT_EQ(frame.size(), kLarge);
                EXPECT_TRUE(std::all_of(frame.begin(), frame.end(), [&](BYTE byte) { return byte == frame[0]; }));
            }
            there.push_back(cluster.blocks.at(0).frames.at(0)[0]);
        }
        return there;
    }

    static std::vector<int> AllBut(int lost) {
        std::vector<int> clusters;
        for (int cluster = 0; cluster < kClusters; ++cluster) {
            if (cluster != lost) {
                clusters.push_back(cluster);
            }
        }
        return clusters;
    }

    // How many writes a cluster takes.
    size_t WritesOfACluster() {
        RegisterVideo();
        Open();
        m_stream.ClearCalls();
        for (int frame = 0; frame <= kFramesPerCluster; ++frame) {
            WriteOwned(0, frame * 40, frame == kFramesPerCluster, 0);
        }
        const size_t writes = m_stream.Calls(StreamOperation::Write).size();
        Finish();
        m_stream.SetBytes({});
        return writes;
    }

    void ExpectOneLost(int lost, size_t n) {
        const auto there = ClustersThere();
        EXPECT_EQ(there, AllBut(lost)) << "write " << n;
        EXPECT_EQ(File().cues.size(), there.size()) << "write " << n;
        EXPECT_FALSE(File().Segment()->unknownSize) << "write " << n;
        EXPECT_EQ(File().Segment()->End(), m_stream.Bytes().size()) << "write " << n;
    }

    void StartOver() {
        m_stream.ClearFailures();
        m_stream.ClearCalls();
        m_stream.SetBytes({});
        RegisterVideo();
        Open();
    }
};

TEST_F(LargeClusterFailuresTest, EachPayloadIsAWriteOfItsOwn) {
    EXPECT_EQ(WritesOfACluster(), size_t{2 * kFramesPerCluster});
}

// What was written of the lost cluster is written over by the next one, or cut off when it was the last.
TEST_F(LargeClusterFailuresTest, AWriteThatFailsLosesItsClusterAsAWhole) {
    const size_t writes = WritesOfACluster();
    for (size_t n = 1; n <= kClusters * writes; ++n) {
        StartOver();
        m_stream.FailNth(StreamOperation::Write, n, STG_E_MEDIUMFULL);
        WriteClusters();
        ExpectOneLost(static_cast<int>((n - 1) / writes), n);
    }
}

TEST_F(LargeClusterFailuresTest, AShortWriteLosesItsClusterAsAWhole) {
    const size_t writes = WritesOfACluster();
    for (size_t n = 1; n <= kClusters * writes; ++n) {
        StartOver();
        size_t calls = 0; // nothing but writes before the one that is short
        m_stream.OnEveryCall([this, &calls, n] {
            if (++calls == n) {
                m_stream.AnswerNextWrite(S_OK, 3);
            }
        });
        WriteClusters();
        ExpectOneLost(static_cast<int>((n - 1) / writes), n);
        EXPECT_GT(calls, n);
        m_stream.OnEveryCall([] {}); // the counter goes
    }
}

TEST_F(LargeClusterFailuresTest, TheFailureStaysVisibleUntilTheNextCluster) {
    RegisterVideo();
    Open();
    m_stream.FailNth(StreamOperation::Write, 3, STG_E_MEDIUMFULL);
    for (int frame = 0; frame <= kFramesPerCluster; ++frame) {
        WriteOwned(0, frame * 40, frame == kFramesPerCluster, 0);
    }
    EXPECT_EQ(m_io.lastWriteResult(), STG_E_MEDIUMFULL);
    Finish();
    EXPECT_EQ(m_io.lastWriteResult(), S_OK);
}

// Nothing can be written over there: a cluster that was lost in its middle would hide those behind it.
TEST_F(LargeClusterFailuresTest, AnOutputThatDoesNotSeekGetsEachClusterInOneWrite) {
    KeepFromJudges(); // the head is at the end
    m_stream.FailFrom(StreamOperation::Seek, 1, E_NOTIMPL);
    RegisterVideo();
    Open();
    m_stream.ClearCalls();
    m_stream.FailNth(StreamOperation::Write, 2, STG_E_MEDIUMFULL);
    WriteClusters();
    const auto writes = m_stream.Calls(StreamOperation::Write);
    ASSERT_EQ(writes.size(), size_t{kClusters - 1}); // the last one is open
    EXPECT_EQ(writes[2].position, writes[1].position) << "nothing is left of the lost one";
    m_writer.Close();
    m_writer.detach();
    m_io.releaseStream();
    const auto layout = Snapshot();
    EXPECT_EQ(layout.clusters.size(), size_t{kClusters - 1});
    EXPECT_EQ(layout.BlocksOf(1).size(), size_t{(kClusters - 1) * kFramesPerCluster});
}

} // namespace
