// AviReader: the chunks of an AVI file as packets with times.
//
// Units: times in 100 ns. Owner: the source filter. Threads: one at a time.
// Errors: reading ends at a chunk that cannot be read; one that is too large is left out.
#pragma once

#include <memory>

#include "sources/avi/avi_file.h"
#include "sources/base/packet_reader.h"

namespace avi {

class AviReader final : public source::PacketReader {
  public:
    AviReader(std::unique_ptr<source::ByteSource> bytes, AviFile file);

    [[nodiscard]] const std::vector<source::StreamDescription>& Streams() const override { return m_streams; }

  private:
    // PacketReader
    void StartOver() override;
    [[nodiscard]] bool ReadNext(source::Packet& packet) override;
    [[nodiscard]] HRESULT DamageSoFar() const override;

    // What was passed of a stream so far.
    struct Progress {
        UINT64 bytes = 0;
        UINT64 chunks = 0;
    };

    [[nodiscard]] UINT64 UnitAt(const AviStream& stream, const Progress& progress) const;

    const std::unique_ptr<source::ByteSource> m_bytes;
    const AviFile m_file;
    std::vector<source::StreamDescription> m_streams;
    std::vector<Progress> m_progress;
    size_t m_next = 0;
    bool m_lostChunk = false;
};

} // namespace avi
