#include "mux/mux_inter_stream.h"

#include <algorithm>
#include <utility>

namespace {

constexpr UINT32 kVideoByteLimit = 104857600;  // 100 MiB
constexpr UINT32 kAudioByteLimit = 10485760;   // 10 MiB
constexpr UINT32 kSubtitleByteLimit = 1048576; // 1 MiB
// Streams of no known kind are throttled to one small packet at a time, on purpose.
constexpr UINT32 kOtherByteLimit = 2000;

// How many packets a producer adds without a look at what the worker has taken.
constexpr UINT32 kPacketsBetweenLooks = 4096;

// The part of its limit that a queue grows by before its peak is looked at.
constexpr UINT64 kPeakSteps = 1024;

// Only one thread changes the number.
template <typename Number>
void Add(std::atomic<Number>& number, Number more, std::memory_order order = std::memory_order_relaxed) {
    number.store(number.load(std::memory_order_relaxed) + more, order);
}

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
    const UINT64 addedBytes = m_addedBytes.load(std::memory_order_relaxed) + packet->size;
    m_addedBytes.store(addedBytes, std::memory_order_release);
    if (!packet->endOfStream) {
        Add(m_addedPackets, UINT64{1}, std::memory_order_release);
    }
    NotePeak(addedBytes);
    m_addedSinceLook.store(m_addedSinceLook.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    m_queue.Append(std::move(packet));
}

// What the worker has taken is looked at only when the peak may have grown: its cache line is not the producer's.
void CMuxInterStream::NotePeak(UINT64 addedBytes) {
    const UINT64 peak = m_peakBytes.load(std::memory_order_relaxed);
    if (addedBytes - m_takenBytesSeen.load(std::memory_order_relaxed) < peak + m_byteLimit / kPeakSteps) {
        return;
    }
    const UINT64 taken = m_takenBytes.load(std::memory_order_acquire);
    m_takenBytesSeen.store(taken, std::memory_order_relaxed);
    if (addedBytes - taken > peak) {
        m_peakBytes.store(addedBytes - taken, std::memory_order_relaxed);
    }
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
        m_hasReturned = true;
    }
    auto packet = m_queue.TakeFront();
    // Sequentially consistent, as the look at IsRoomAwaited that follows.
    m_takenBytes.store(m_takenBytes.load(std::memory_order_relaxed) + packet->size, std::memory_order_seq_cst);
    Add(m_takenPackets, UINT64{1}, std::memory_order_release);
    m_lastStart.store(packet->start, std::memory_order_relaxed);
    return packet;
}

bool CMuxInterStream::CountTaken(const CMuxInterPacket& packet, INT64 newestBefore) {
    const bool hasReturned = std::exchange(m_hasReturned, false);
    if (hasReturned) {
        m_lateBefore = newestBefore;
    }
    if (packet.start < m_lateBefore) {
        Add(m_latePackets, UINT64{1});
    } else {
        m_lateBefore = std::numeric_limits<INT64>::min(); // it has caught up
    }
    return hasReturned;
}

void CMuxInterStream::CountLost(UINT32 bytes) {
    Add(m_lostBytes, UINT64{bytes}, std::memory_order_release);
    Add(m_lostPackets, UINT64{1}, std::memory_order_release);
}

// What was lost is read before what was taken, and that before what was added, so that no difference is below zero.
CMuxInterStream::Figures CMuxInterStream::GetFigures() const {
    Figures figures;
    figures.lost = m_lostPackets.load(std::memory_order_acquire);
    const UINT64 lostBytes = m_lostBytes.load(std::memory_order_acquire);
    const UINT64 taken = m_takenPackets.load(std::memory_order_acquire);
    const UINT64 takenBytes = m_takenBytes.load(std::memory_order_acquire);
    figures.queuedPackets = m_addedPackets.load(std::memory_order_acquire) - taken;
    figures.queuedBytes = m_addedBytes.load(std::memory_order_acquire) - takenBytes;
    figures.queuePeakBytes = std::max(m_peakBytes.load(std::memory_order_relaxed), figures.queuedBytes);
    figures.packets = taken - std::min(taken, figures.lost);
    figures.bytes = takenBytes - std::min(takenBytes, lostBytes);
    figures.lastStart = m_lastStart.load(std::memory_order_relaxed);
    figures.late = m_latePackets.load(std::memory_order_relaxed);
    figures.silences = m_silences.load(std::memory_order_relaxed);
    figures.isSilent = IsSuspended();
    return figures;
}

// A packet that arrives meanwhile has done so before or after, which comes to the same.
bool CMuxInterStream::Suspend() {
    const bool isNew = !m_suspended.load(std::memory_order_relaxed);
    if (isNew) {
        Add(m_silences, UINT32{1});
    }
    m_suspended.store(true, std::memory_order_relaxed);
    m_interleaved.store(false, std::memory_order_relaxed);
    return isNew;
}
