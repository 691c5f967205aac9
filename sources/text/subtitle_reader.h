// SubtitleReader: the events of a subtitle file as packets.
//
// Units: times in 100 ns, shifted together so that none is below zero. Owner: the source filter.
// Threads: one at a time. Errors: Damage tells of lines that were passed over.
#pragma once

#include "sources/base/packet_reader.h"
#include "sources/text/subtitle_file.h"

namespace subtitles {

class SubtitleReader final : public source::PacketReader {
  public:
    explicit SubtitleReader(SubtitleFile file);

    [[nodiscard]] const std::vector<source::StreamDescription>& Streams() const override { return m_streams; }

  private:
    // PacketReader
    void StartOver() override { m_next = 0; }
    [[nodiscard]] bool ReadNext(source::Packet& packet) override;
    [[nodiscard]] HRESULT DamageSoFar() const override;

    const SubtitleFile m_file;
    std::vector<source::StreamDescription> m_streams;
    REFERENCE_TIME m_shift = 0;
    size_t m_next = 0;
};

} // namespace subtitles
