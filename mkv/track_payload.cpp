#include "mkv/track_payload.h"

#include <optional>
#include <span>

#include "media/av1_stream.h"
#include "media/payload_conversion.h"
#include "media/track_type.h"
#include "mkv/codec_mapping.h"

namespace mkv {

namespace {

// The library's readers refuse binary elements of 2 GiB - 1 byte, and a block has up to five bytes before its frame.
constexpr UINT32 kMaxFrameBytes = 0x7ffffffe - 5;

struct CompatibleConversion {
    static std::optional<std::span<BYTE>> inPlace(const AM_MEDIA_TYPE& /*type*/, std::span<BYTE> payload) {
        return media::ConvertAnnexBInPlace(payload);
    }
    static std::vector<BYTE> copy(const AM_MEDIA_TYPE& type, std::span<const BYTE> payload) {
        return media::ConvertPayload(type, payload);
    }
};

struct StrictConversion {
    static std::optional<std::span<BYTE>> inPlace(const AM_MEDIA_TYPE& type, std::span<BYTE> payload) {
        return media::ConvertStrictInPlace(type, payload);
    }
    static std::vector<BYTE> copy(const AM_MEDIA_TYPE& type, std::span<const BYTE> payload) {
        return media::ConvertStrictPayload(type, payload);
    }
};

// In place where the packet's bytes are ours, else in that room.
template <typename Conversion>
FrameBytes ConvertedFrame(const Packet& packet, const AM_MEDIA_TYPE& type, std::vector<BYTE>& room) {
    if (packet.owned != nullptr) {
        BYTE* const bytes = packet.owned->get() + (packet.data - packet.owned->get());
        if (const auto frame = Conversion::inPlace(type, {bytes, packet.size})) {
            return {*frame, packet.owned};
        }
    }
    room = Conversion::copy(type, {packet.data, packet.size});
    return {room, nullptr};
}

template <typename Conversion>
FrameBytes FrameOf(const Packet& packet, const TrackFacts& track, std::vector<BYTE>& room) {
    if (packet.data == nullptr || packet.size > kMaxFrameBytes) {
        return {};
    }
    if (track.isConverted) {
        return ConvertedFrame<Conversion>(packet, track.type, room);
    }
    return {{packet.data, packet.size}, packet.owned};
}

} // namespace

bool IsKeyframe(const Packet& packet, const TrackFacts& track) {
    return TrackTypeOf(track.type) != media::kTrackTypeVideo || packet.syncPoint;
}

bool IsStrictKeyframe(const Packet& packet, const TrackFacts& track, const FrameBytes& frame) {
    return media::IsAv1(track.type) ? media::IsAv1Keyframe(frame.bytes, packet.syncPoint) : IsKeyframe(packet, track);
}

FrameBytes PayloadOf(const Packet& packet, const TrackFacts& track, std::vector<BYTE>& room) {
    return FrameOf<CompatibleConversion>(packet, track, room);
}

FrameBytes StrictPayloadOf(const Packet& packet, const TrackFacts& track, std::vector<BYTE>& room) {
    return FrameOf<StrictConversion>(packet, track, room);
}

} // namespace mkv
