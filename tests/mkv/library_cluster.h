// LibraryCluster: a cluster made and rendered by libmatroska's own objects: what the writer's bytes are compared with.
#pragma once

#include <memory>
#include <vector>

#include <matroska/KaxBlock.h>
#include <matroska/KaxBlockData.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxClusterData.h>
#include <matroska/KaxCues.h>

#include "mkv/cluster_rule.h"
#include "mkv/time_shifter.h"

namespace mkv_test {

class LibraryCluster {
  public:
    LibraryCluster(const libmatroska::KaxSegment& segment, UINT64 startNs) {
        m_cluster.SetParent(segment);
        m_cluster.InitTimecode(startNs / mkv::kTimecodeScaleNs, mkv::kTimecodeScaleNs);
    }
    ~LibraryCluster() {
        // The cluster would delete the blocks, which the blobs own.
        const std::unique_ptr<libebml::EbmlElement> time(m_cluster.FindElt(EBML_INFO(libmatroska::KaxClusterTimecode)));
        m_cluster.RemoveAll();
    }
    LibraryCluster(const LibraryCluster&) = delete;
    LibraryCluster& operator=(const LibraryCluster&) = delete;

    // The bytes stay the caller's until the cluster is rendered.
    const libmatroska::KaxBlockBlob& AddSimple(const libmatroska::KaxTrackEntry& track, UINT64 timeNs,
                                               std::vector<BYTE>& frame, bool keyframe) {
        auto& blob = AddBlob(libmatroska::BLOCK_BLOB_ALWAYS_SIMPLE);
        blob.AddFrameAuto(track, timeNs, Wrap(frame), libmatroska::LACING_AUTO);
        static_cast<libmatroska::KaxSimpleBlock&>(blob).SetKeyframe(keyframe);
        m_cluster.AddBlockBlob(&blob);
        return blob;
    }
    const libmatroska::KaxBlockBlob& AddGroup(const libmatroska::KaxTrackEntry& track, const mkv::BlockTimes& times,
                                              std::vector<BYTE>& frame) {
        auto& blob = AddBlob(libmatroska::BLOCK_BLOB_NO_SIMPLE);
        auto group = std::make_unique<libmatroska::KaxBlockGroup>();
        group->SetParent(m_cluster);
        group->AddFrame(track, times.timeNs, Wrap(frame), libmatroska::LACING_AUTO);
        group->SetBlockDuration(times.durationNs);
        blob.SetBlockGroup(*group.release()); // the blob's now
        m_cluster.AddBlockBlob(&blob);
        return blob;
    }
    void Render(libebml::IOCallback& io, libmatroska::KaxCues& cues) { m_cluster.Render(io, cues, false); }

  private:
    static libmatroska::DataBuffer& Wrap(std::vector<BYTE>& frame) { // the block's
        return *new libmatroska::DataBuffer(frame.data(), static_cast<UINT32>(frame.size()), nullptr, false);
    }
    libmatroska::KaxBlockBlob& AddBlob(libmatroska::BlockBlobType type) {
        auto& blob = *m_blobs.emplace_back(std::make_unique<libmatroska::KaxBlockBlob>(type));
        blob.SetParent(m_cluster);
        return blob;
    }

    libmatroska::KaxCluster m_cluster;
    std::vector<std::unique_ptr<libmatroska::KaxBlockBlob>> m_blobs;
};

} // namespace mkv_test
