#include "mkv/track_payload.h"

#include "media/payload_conversion.h"
#include "media/track_type.h"
#include "mkv/codec_mapping.h"

namespace mkv {

namespace {

// The library's readers refuse binary elements of 2 GiB - 1 byte, and a block has up to five bytes before its frame.
constexpr UINT32 kMaxFrameBytes = 0x7ffffffe - 5;

// In place where the packet's bytes are ours, else in that room.
FrameBytes ConvertedFrame(const Packet& packet, const AM_MEDIA_TYPE& type, std::vector<BYTE>& room) {
    if (packet.owned != nullptr) {
        BYTE* const bytes = packet.owned->get() + (packet.data - packet.owned->get());
        if (const auto frame = media::ConvertAnnexBInPlace({bytes, packet.size})) {
            return {*frame, packet.owned};
        }
    }
    room = media::ConvertPayload(type, {packet.data, packet.size});
    return {room, nullptr};
}

} // namespace

bool IsKeyframe(const Packet& packet, const TrackFacts& track) {
    return TrackTypeOf(track.type) != media::kTrackTypeVideo || packet.syncPoint;
}

FrameBytes PayloadOf(const Packet& packet, const TrackFacts& track, std::vector<BYTE>& room) {
    if (packet.data == nullptr || packet.size > kMaxFrameBytes) {
        return {};
    }
    if (track.hasStartCodes) {
        return ConvertedFrame(packet, track.type, room);
    }
    return {{packet.data, packet.size}, packet.owned};
}

} // namespace mkv
