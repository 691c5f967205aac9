// CHeldPackets: what cannot be written yet where one file ends and the next begins. Before a keyframe: packets of other
// tracks that begin at the same instant, since which file they belong to is known when the next packet comes. Behind
// it: all, until the pictures that are shown before the keyframe have come, since the earliest of them is where the
// times of the file begin. It has bounds, and is used only while a file is to begin.
//
// Units: 100 ns. Owner: the file sequence. Threads: under the filter's writer lock. Errors: std::bad_alloc; nothing is
// held then that was not before.
#pragma once

#include <vector>

#include "dshow/ref_time.h"
#include "mkv/writer_input.h"
#include "mux/mux_inter_stream.h"

// A packet with all that is known of it; its bytes are its own.
struct HeldPacket {
    mkv::Packet media;
    win::OwnedBytes bytes;
    CMuxInterStream* stream = nullptr; // not owned; it lives as long as the run
};

class CHeldPackets {
  public:
    static constexpr size_t kMaxPackets = 1024;
    static constexpr UINT64 kMaxBytes = UINT64{64} << 20;
    static constexpr REFERENCE_TIME kMaxSpan = 20'000'000; // two seconds behind the keyframe

    [[nodiscard]] bool IsEmpty() const { return m_packets.empty(); }
    void Hold(HeldPacket&& packet);
    // Of the first that is held; there is one.
    [[nodiscard]] REFERENCE_TIME FirstStart() const { return m_packets.front().media.start; }
    // In the order that they came in. Nothing is held then, and nothing is behind a keyframe.
    [[nodiscard]] std::vector<HeldPacket> TakeAll();

    // ---- Before a keyframe ----

    // Whether the packet cannot be held beside the others: it begins at another instant, or they are too many.
    [[nodiscard]] bool IsAnotherInstant(const mkv::Packet& packet) const;

    // ---- Behind one ----

    // That is the keyframe; it is held, too.
    void Begin(HeldPacket&& keyframe);
    [[nodiscard]] bool IsBehindKeyframe() const { return m_isBehind; }
    [[nodiscard]] REFERENCE_TIME KeyframeStart() const { return m_keyframeStart; }
    [[nodiscard]] UINT32 KeyframeStream() const { return m_keyframeStream; }
    // Whether all pictures that are shown before the keyframe have come when this packet does.
    [[nodiscard]] bool IsPast(const mkv::Packet& packet) const;
    // The start of the earliest picture of that track.
    [[nodiscard]] REFERENCE_TIME Origin() const;

  private:
    [[nodiscard]] bool IsFull() const { return m_packets.size() >= kMaxPackets || m_bytes >= kMaxBytes; }

    std::vector<HeldPacket> m_packets;
    UINT64 m_bytes = 0;
    bool m_isBehind = false;
    REFERENCE_TIME m_keyframeStart = 0;
    UINT32 m_keyframeStream = 0;
};
