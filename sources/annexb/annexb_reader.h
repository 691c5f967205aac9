// AnnexBReader: the pictures of an H.264 or H.265 byte stream as packets, all start codes four bytes long.
//
// Units: times in 100 ns, in the order of presentation. Owner: the source filter. Threads: one at a time.
// Errors: reading ends at a picture that cannot be read; one that is too large is left out.
#pragma once

#include <memory>

#include "sources/annexb/frame_rate.h"
#include "sources/annexb/picture_index.h"
#include "sources/annexb/unit_scanner.h"
#include "sources/base/packet_reader.h"

namespace annexb {

enum class Codec { Avc, Hevc };

class AnnexBReader final : public source::PacketReader {
  public:
    AnnexBReader(std::unique_ptr<source::ByteSource> bytes, PictureIndex index, Codec codec, const FrameRate& rate);

    [[nodiscard]] const std::vector<source::StreamDescription>& Streams() const override { return m_streams; }

  private:
    // PacketReader
    void StartOver() override;
    [[nodiscard]] bool ReadNext(source::Packet& packet) override;
    [[nodiscard]] HRESULT DamageSoFar() const override;

    [[nodiscard]] bool ReadPicture(const CodedPicture& picture, std::vector<BYTE>& data);
    void LengthenStartCodes(std::vector<BYTE>& data);

    const std::unique_ptr<source::ByteSource> m_bytes;
    const PictureIndex m_index;
    const FrameRate m_rate;
    std::vector<source::StreamDescription> m_streams;
    std::vector<UnitExtent> m_units; // of one picture
    std::vector<BYTE> m_rewritten;   // its bytes; both are kept for their memory
    size_t m_next = 0;
    bool m_lostPictures = false;
};

} // namespace annexb
