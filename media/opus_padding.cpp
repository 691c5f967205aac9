#include "media/opus_padding.h"

#include <algorithm>

#include "codecs/opus_packet.h"
#include "dshow/media_subtypes.h"
#include "dshow/ref_time.h"

namespace media {

namespace {

using codecs::kOpusSamplesPerSecond;

constexpr UINT64 kNsPerSecond = UINT64{kReferenceTimesPerSecond} * UINT64{kNsPerReferenceTime};
// No packet is longer; so products stay small.
constexpr UINT64 kMaxPacketNs = kNsPerSecond / 8;

UINT64 Scaled(UINT64 value, UINT64 to, UINT64 from) {
    return (value * to + from / 2) / from;
}

} // namespace

bool IsOpus(const AM_MEDIA_TYPE& type) {
    return type.majortype == MEDIATYPE_Audio && type.subtype == mediasubtype::kOpus;
}

REFERENCE_TIME OpusLengthWithout(ByteView packet, UINT64 paddingNs) {
    const UINT64 samples = codecs::OpusPacketSamples(packet);
    const UINT64 padding = Scaled(std::min(paddingNs, kMaxPacketNs), kOpusSamplesPerSecond, kNsPerSecond);
    const UINT64 heard = samples - std::min(samples, padding);
    return static_cast<REFERENCE_TIME>(Scaled(heard, UINT64{kReferenceTimesPerSecond}, kOpusSamplesPerSecond));
}

UINT64 OpusPaddingNs(ByteView packet, REFERENCE_TIME length) {
    const UINT64 samples = codecs::OpusPacketSamples(packet);
    if (length <= 0 || length >= kReferenceTimesPerSecond) {
        return 0;
    }
    const UINT64 heard = Scaled(static_cast<UINT64>(length), kOpusSamplesPerSecond, UINT64{kReferenceTimesPerSecond});
    return Scaled(samples - std::min(samples, heard), kNsPerSecond, kOpusSamplesPerSecond);
}

} // namespace media
