// Memory that ends just where a cluster has more cue points than there is room for: it costs the block that asked for
// the room, and none that was taken before. The point has its room when its block comes in, so that a whole cluster is
// not lost for want of it when it is written.
#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "mkv/mkv_writer.h"
#include "tests/faults/allocation_faults.h"
#include "tests/support/matroska_layout.h"
#include "tests/support/media_types.h"
#include "tests/support/memory_stream.h"
#include "tests/support/system_code.h"

using namespace test_support;

namespace faults {

namespace {

constexpr INT64 kFrame = 10 * 10000; // 10 ms in units of 100 ns
constexpr UINT32 kVideo = 0;
constexpr UINT32 kText = 1;
// As many cue points as the first room has; a block too many, whose cluster the keyframe behind it has written.
constexpr INT64 kFirstRoom = 16;
constexpr INT64 kSecondCluster = 2;

// A block each, and a cue point: texts, and the keyframes that the two clusters begin with.
class CuedWriter {
  public:
    explicit CuedWriter(MuxProfile profile) {
        m_io.setStream(&m_stream);
        m_writer.registerTrack(VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd')).Get(), {});
        m_writer.registerTrack(SubtitleType(mediasubtype::kUtf8).Get(), {});
        records::FileOptions options;
        options.profile = profile;
        m_writer.Open(&m_io, options);
    }

    // False when there is no memory for it.
    bool Write(INT64 frame) {
        const bool isText = frame != 0 && frame != kSecondCluster && frame != kFirstRoom + 1;
        const BYTE payload[] = {'t', 'e', 'x', 't'};
        const INT64 start = frame * kFrame;
        try {
            const ProductCode product;
            m_writer.WritePacket(
                {start, start + kFrame, payload, sizeof(payload), true, isText ? kText : kVideo, isText});
        } catch (const std::bad_alloc&) {
            return false;
        }
        return true;
    }

    // The starts of all blocks, in milliseconds.
    std::vector<int64_t> Finish() {
        m_writer.Close();
        m_writer.detach();
        m_io.releaseStream();
        const auto bytes = m_stream.Bytes();
        std::vector<int64_t> times;
        for (const LayoutCluster& cluster : ReadLayout(bytes).clusters) {
            for (const LayoutBlock& block : cluster.blocks) {
                times.push_back(block.time);
            }
        }
        return times;
    }

  private:
    const SystemCode m_notTheProduct; // but what ProductCode is said of
    MemoryStream m_stream;
    CMkvIO m_io;
    CMkvWriter m_writer;
};

class CueRoom : public testing::TestWithParam<MuxProfile> {};

TEST_P(CueRoom, ThatCannotBeHadCostsNoBlockThatWasTakenBefore) {
    size_t strikes = 0;
    for (size_t n = 1;; ++n) {
        CuedWriter writer(GetParam());
        std::vector<int64_t> taken;
        bool hasStruck = false;
        const auto write = [&](INT64 frame) {
            if (writer.Write(frame)) {
                taken.push_back(frame * kFrame / 10000);
            }
        };
        for (INT64 frame = 0; frame < kFirstRoom; ++frame) {
            write(frame);
        }
        {
            const AllocationFault fault(n);
            write(kFirstRoom);
            write(kFirstRoom + 1);
            hasStruck = fault.HasStruck();
        }
        EXPECT_EQ(taken, writer.Finish()) << n;
        if (!hasStruck) {
            break;
        }
        ++strikes;
    }
    EXPECT_GT(strikes, 0u) << "there was room";
}

INSTANTIATE_TEST_SUITE_P(Profiles, CueRoom, testing::Values(MuxProfile_Compatible, MuxProfile_Strict),
                         [](const testing::TestParamInfo<MuxProfile>& profile) {
                             return profile.param == MuxProfile_Strict ? "Strict" : "Compatible";
                         });

} // namespace

} // namespace faults
