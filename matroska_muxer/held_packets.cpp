#include "matroska_muxer/held_packets.h"

#include <algorithm>
#include <utility>

void CHeldPackets::Hold(HeldPacket&& packet) {
    const UINT32 bytes = packet.media.size;
    m_packets.push_back(std::move(packet));
    m_bytes += bytes;
}

std::vector<HeldPacket> CHeldPackets::TakeAll() {
    m_bytes = 0;
    m_isBehind = false;
    return std::exchange(m_packets, {});
}

bool CHeldPackets::IsAnotherInstant(const mkv::Packet& packet) const {
    return !IsEmpty() && (IsFull() || packet.start != m_packets.front().media.start);
}

void CHeldPackets::Begin(HeldPacket&& keyframe) {
    const REFERENCE_TIME start = keyframe.media.start;
    const UINT32 stream = keyframe.media.stream;
    Hold(std::move(keyframe));
    m_keyframeStart = start;
    m_keyframeStream = stream;
    m_isBehind = true;
}

bool CHeldPackets::IsPast(const mkv::Packet& packet) const {
    const bool isLaterPicture = packet.stream == m_keyframeStream && packet.start > m_keyframeStart;
    return isLaterPicture || IsFull() || packet.start > AddSaturated(m_keyframeStart, kMaxSpan);
}

REFERENCE_TIME CHeldPackets::Origin() const {
    REFERENCE_TIME origin = m_keyframeStart;
    for (const HeldPacket& packet : m_packets) {
        if (packet.media.stream == m_keyframeStream) {
            origin = std::min(origin, packet.media.start);
        }
    }
    return origin;
}
