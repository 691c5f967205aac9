// ObuReader: the temporal units of an AV1 stream as packets, all units with their sizes.
//
// Units: times in 100 ns: each temporal unit shows one picture. Owner: the source filter. Threads: one at a time.
// Errors: reading ends at a temporal unit that is damaged or too large.
#pragma once

#include <memory>

#include "sources/annexb/frame_rate.h"
#include "sources/av1/temporal_units.h"
#include "sources/base/packet_reader.h"

namespace av1 {

class ObuReader final : public source::PacketReader {
  public:
    // The rate is that of a stream that does not tell its own.
    ObuReader(std::unique_ptr<source::ByteSource> file, StreamForm form, const annexb::FrameRate& rate);

    // Whether it begins with a temporal unit that has a sequence header.
    [[nodiscard]] bool HasHeader() const { return m_hasHeader; }
    [[nodiscard]] const std::vector<source::StreamDescription>& Streams() const override { return m_streams; }

  private:
    // PacketReader
    void StartOver() override;
    [[nodiscard]] bool ReadNext(source::Packet& packet) override;
    [[nodiscard]] HRESULT DamageSoFar() const override;

    [[nodiscard]] bool ReadUnit(std::vector<BYTE>& data);
    void Describe();

    const std::unique_ptr<source::ByteSource> m_file;
    const StreamForm m_form;
    annexb::FrameRate m_rate;
    bool m_hasHeader = false;
    std::vector<source::StreamDescription> m_streams;
    UINT64 m_position = 0;
    UINT64 m_number = 0; // of the next temporal unit
    bool m_isDamaged = false;
};

} // namespace av1
