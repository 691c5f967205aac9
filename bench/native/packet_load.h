// PacketLoad: the packets of one measurement in the order in which they belong into the file, over bytes in memory that
// ours and the other muxers read alike.
//
// Units: bytes, times in 100 ns. Owner: itself; the packets point into its bytes, so it is not copied.
// Threads: read by any.
#pragma once

#include <string>
#include <vector>

#include "tests/support/media_type_value.h"
#include "win/platform.h"

namespace bench {

// One input, as each muxer has to be told of it.
struct LoadTrack {
    enum class Kind { Avc, Aac, Srt, Opus };
    Kind kind = Kind::Opus;
    test_support::MediaTypeValue type;
    std::vector<BYTE> codecPrivate; // as it stands in the file
};

struct LoadPacket {
    const BYTE* data = nullptr;
    UINT32 size = 0;
    UINT32 track = 0;
    INT64 start = 0;
    INT64 stop = 0;
    bool keyframe = true;
};

class PacketLoad {
  public:
    PacketLoad() = default;
    PacketLoad(PacketLoad&&) = default;
    PacketLoad& operator=(PacketLoad&&) = default;
    PacketLoad(const PacketLoad&) = delete;
    PacketLoad& operator=(const PacketLoad&) = delete;

    UINT32 AddTrack(LoadTrack::Kind kind);
    UINT32 AddByteStreamTrack(); // H.264 with start codes
    // Sizes and times first; then Fill gives them their bytes and their order.
    void Add(UINT32 track, size_t size, INT64 start, INT64 duration, bool keyframe = true);
    // Every packet of the track becomes so many NAL units of one size, each behind a start code or a length.
    enum class Units { None, Lengths, StartCodes };
    void Fill(Units units = Units::None);

    [[nodiscard]] const std::vector<LoadTrack>& Tracks() const { return m_tracks; }
    [[nodiscard]] const std::vector<LoadPacket>& Packets() const { return m_packets; }
    [[nodiscard]] const std::vector<LoadPacket>& PacketsOf(size_t track) const { return m_packetsOf[track]; }
    [[nodiscard]] UINT64 Bytes() const { return m_byteCount; }

  private:
    std::vector<LoadTrack> m_tracks;
    std::vector<LoadPacket> m_packets;
    std::vector<std::vector<LoadPacket>> m_packetsOf; // each track
    std::vector<BYTE> m_bytes;
    UINT64 m_byteCount = 0;
};

// The track that a muxer is told of.
[[nodiscard]] LoadTrack TrackOf(LoadTrack::Kind kind);

// A film: 555 MB in 41698 packets of H.264, AAC and SubRip.
[[nodiscard]] PacketLoad FilmLoad();
// Opus packets of 20 ms in so many tracks, so many in all.
[[nodiscard]] PacketLoad OpusLoad(UINT32 tracks, size_t packets, size_t packetBytes);
// One H.264 track of 64 KiB pictures in eight slices.
[[nodiscard]] PacketLoad SlicedVideoLoad(size_t packets, PacketLoad::Units units);

} // namespace bench
