// IvfReader: the frames of an IVF file as packets: AV1, VP8 or VP9.
//
// Units: times in 100 ns; a packet lasts to the next one, the last as long as the one before it. Owner: the source
// filter. Threads: one at a time. Errors: reading ends at a frame that the file does not hold as a whole; one that is
// too large is left out.
#pragma once

#include <memory>

#include "sources/av1/ivf_header.h"
#include "sources/base/packet_reader.h"

namespace av1 {

class IvfReader final : public source::PacketReader {
  public:
    IvfReader(std::unique_ptr<source::ByteSource> file, const IvfHeader& header);

    [[nodiscard]] const std::vector<source::StreamDescription>& Streams() const override { return m_streams; }

  private:
    // PacketReader
    void StartOver() override;
    [[nodiscard]] bool ReadNext(source::Packet& packet) override;
    [[nodiscard]] HRESULT DamageSoFar() const override;

    [[nodiscard]] CMediaType MakeType() const;
    [[nodiscard]] REFERENCE_TIME FrameDuration() const;
    [[nodiscard]] std::vector<BYTE> FirstFrame() const;
    [[nodiscard]] bool ReadFrame(const IvfFrame& frame, std::vector<BYTE>& data) const;
    void SetTimes(const IvfFrame& frame, source::Packet& packet);

    const std::unique_ptr<source::ByteSource> m_file;
    const IvfHeader m_header;
    std::vector<source::StreamDescription> m_streams;
    UINT64 m_position = 0;
    REFERENCE_TIME m_lastDuration = 0;
    bool m_isDamaged = false;
};

} // namespace av1
