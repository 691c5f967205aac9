// BareCluster: one cluster of libmatroska alone, cut by the writer's rules, with its blocks, which libmatroska leaves
// to its user to delete.
//
// Units: bytes, nanoseconds. Owner: a baseline; segment, tracks and payloads outlive it. Threads: one.
#pragma once

#include <memory>
#include <vector>

#include <matroska/KaxBlock.h>
#include <matroska/KaxCluster.h>
#include <matroska/KaxCues.h>
#include <matroska/KaxSegment.h>
#include <matroska/KaxTracks.h>

#include "win/platform.h"

namespace bench {

// Copies what is rendered into a buffer, from whose start each cluster is written again.
class BufferOutput final : public libebml::IOCallback {
  public:
    uint32 read(void*, size_t) override { return 0; }
    void setFilePointer(int64 offset, libebml::seek_mode) override { m_position = static_cast<uint64>(offset); }
    size_t write(const void* data, size_t size) override;
    uint64 getFilePointer() override { return m_position; }
    void close() override {}

    void Rewind() { m_buffer.clear(); }
    [[nodiscard]] const std::vector<BYTE>& Rendered() const { return m_buffer; }

  private:
    std::vector<BYTE> m_buffer;
    uint64 m_position = 0;
};

class BareCluster {
  public:
    BareCluster(libmatroska::KaxSegment& segment, UINT64 startNs);
    ~BareCluster();
    BareCluster(const BareCluster&) = delete;
    BareCluster& operator=(const BareCluster&) = delete;

    // Whether a block of so many bytes that ends then still belongs into it.
    [[nodiscard]] bool Takes(UINT64 endNs, size_t bytes) const;
    void Add(const libmatroska::KaxTrackEntry& track, UINT64 timeNs, const BYTE* data, size_t size);
    void Render(BufferOutput& output, libmatroska::KaxCues& cues);

  private:
    const UINT64 m_startNs;
    UINT64 m_payloadBytes = 0;
    libmatroska::KaxCluster m_cluster;
    std::vector<std::unique_ptr<libmatroska::KaxBlockBlob>> m_blobs;
};

// So many tracks, which the segment owns.
[[nodiscard]] std::vector<libmatroska::KaxTrackEntry*> MakeBareTracks(libmatroska::KaxSegment& segment, size_t count);

} // namespace bench
