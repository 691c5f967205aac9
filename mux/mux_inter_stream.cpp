#include "mux/mux_inter_stream.h"

namespace {

constexpr UINT32 kVideoByteLimit = 104857600;  // 100 MiB
constexpr UINT32 kAudioByteLimit = 10485760;   // 10 MiB
constexpr UINT32 kSubtitleByteLimit = 1048576; // 1 MiB
// Streams of no known kind are throttled to one small packet at a time, on purpose.
constexpr UINT32 kOtherByteLimit = 2000;

} // namespace

UINT32 CMuxInterStream::ByteLimitOf(MuxStreamKind kind) {
    switch (kind) {
    case MuxStreamKind::Video:
        return kVideoByteLimit;
    case MuxStreamKind::Audio:
        return kAudioByteLimit;
    case MuxStreamKind::Subtitle:
        return kSubtitleByteLimit;
    case MuxStreamKind::Other:
        break;
    }
    return kOtherByteLimit;
}

void CMuxInterStream::Attach(CBaseMuxInputPin* pin, MuxStreamKind kind, bool interleaved) {
    m_pin = pin;
    m_kind = kind;
    m_byteLimit = ByteLimitOf(kind);
    m_interleaved = interleaved;
    m_active = true;
}

void CMuxInterStream::Append(std::unique_ptr<CMuxInterPacket> packet) {
    AssertLocked();
    const UINT32 size = packet->size;
    const bool endOfStream = packet->endOfStream;
    m_packets.push_back(std::move(packet));
    m_endOfStreamSeen = m_endOfStreamSeen || endOfStream;
    if (m_suspended) {
        m_suspended = false;
        m_interleaved = true;
    }
    m_queuedBytes += size;
    if (m_queuedBytes >= m_byteLimit) {
        m_writable.Reset();
    }
}

std::unique_ptr<CMuxInterPacket> CMuxInterStream::TakeFront() {
    AssertLocked();
    if (IsEmpty() || HasEnded()) {
        return nullptr;
    }
    auto packet = std::move(m_packets.front());
    m_packets.pop_front();
    m_queuedBytes -= packet->size;
    if (!m_writable.IsSet() && m_queuedBytes < m_byteLimit) {
        m_writable.Set();
        m_producers.WakeAll();
    }
    return packet;
}

void CMuxInterStream::Suspend() {
    m_suspended = true;
    m_interleaved = false;
}
