// CFrameGrouper: puts the packets of one input together to frames: a timed packet and the untimed ones that follow it.
//
// Units: bytes. Owner: the input pin; it owns the packets of the frame that is still growing.
// Threads: one at a time: the pin's group lock is held while grouping and merging.
// Errors: std::bad_alloc; the frame that could not be merged is then gone, the growing one stays.
#pragma once

#include <memory>
#include <vector>

#include "mux/mux_inter_packet.h"
#include "mux/untimed_audio_clock.h"
#include "win/platform.h"

class CFrameGrouper {
  public:
    using Packets = std::vector<std::unique_ptr<CMuxInterPacket>>;

    // A frame that never ends is given away in pieces above this size, so that memory stays bounded.
    static constexpr UINT64 kMaxFrameBytes = 104857600; // 100 MiB

    explicit CFrameGrouper(UINT64 maxFrameBytes = kMaxFrameBytes) : m_maxFrameBytes(maxFrameBytes) {}

    // What is ready to be queued: as a rule nothing, or the finished frame before as one packet. The caller takes the
    // packets out of the list, which is the grouper's and used again by the next call.
    [[nodiscard]] Packets&& Add(std::unique_ptr<CMuxInterPacket> packet, const AM_MEDIA_TYPE& type);
    // What is still held, unmerged.
    [[nodiscard]] Packets TakeAll();
    // Deletes what is held and sets the audio clock back to 0.
    void Clear();

  private:
    void Hold(std::unique_ptr<CMuxInterPacket> packet);
    void MovePendingToReady();

    const UINT64 m_maxFrameBytes;
    Packets m_pending;         // the frame that is growing
    Packets m_ready;           // the last one that was given away
    UINT64 m_pendingBytes = 0; // the packets' own memory included
    CUntimedAudioClock m_audioClock;
};
