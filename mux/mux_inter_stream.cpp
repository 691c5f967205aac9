#include "mux/mux_inter_stream.h"

#include <utility>

namespace {

constexpr UINT32 kVideoByteLimit = 104857600;  // 100 MiB
constexpr UINT32 kAudioByteLimit = 10485760;   // 10 MiB
constexpr UINT32 kSubtitleByteLimit = 1048576; // 1 MiB
// Streams of no known kind are throttled to one small packet at a time, on purpose.
constexpr UINT32 kOtherByteLimit = 2000;

// How many packets a producer adds without a look at what the worker has taken.
constexpr UINT32 kPacketsBetweenLooks = 4096;

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
    m_interleaved.store(interleaved, std::memory_order_relaxed);
    m_active = true;
}

// All that belongs to the packet is there before the packet is.
void CMuxInterStream::Append(std::unique_ptr<CMuxInterPacket> packet) {
    m_queue.MakeRoom();
    m_newestStart.store(packet->start, std::memory_order_release);
    if (packet->endOfStream) {
        m_endOfStreamSeen.store(true, std::memory_order_release);
    }
    m_addedBytes.store(m_addedBytes.load(std::memory_order_relaxed) + packet->size, std::memory_order_release);
    m_addedSinceLook.store(m_addedSinceLook.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    m_queue.Append(std::move(packet));
}

bool CMuxInterStream::HasRoom() {
    const UINT64 added = m_addedBytes.load(std::memory_order_acquire);
    if (added - m_takenBytesSeen.load(std::memory_order_relaxed) < m_byteLimit &&
        m_addedSinceLook.load(std::memory_order_relaxed) < kPacketsBetweenLooks) {
        return true;
    }
    m_takenBytesSeen.store(m_takenBytes.load(std::memory_order_acquire), std::memory_order_relaxed);
    const bool isWritable = IsWritable();
    m_addedSinceLook.store(isWritable ? 0 : kPacketsBetweenLooks, std::memory_order_relaxed);
    return isWritable;
}

std::unique_ptr<CMuxInterPacket> CMuxInterStream::TakeFront() {
    const CMuxInterPacket* const front = m_queue.Front();
    if (front == nullptr || front->endOfStream) {
        return nullptr;
    }
    if (m_suspended.load(std::memory_order_relaxed)) { // it has brought the stream back
        m_suspended.store(false, std::memory_order_relaxed);
        m_interleaved.store(true, std::memory_order_relaxed);
    }
    auto packet = m_queue.TakeFront();
    // Sequentially consistent, as the look at IsRoomAwaited that follows.
    m_takenBytes.store(m_takenBytes.load(std::memory_order_relaxed) + packet->size, std::memory_order_seq_cst);
    return packet;
}

// A packet that arrives meanwhile has done so before or after, which comes to the same.
void CMuxInterStream::Suspend() {
    m_suspended.store(true, std::memory_order_relaxed);
    m_interleaved.store(false, std::memory_order_relaxed);
}
