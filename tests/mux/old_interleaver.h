// OldInterleaver: the rules of queueing and taking as plain code that walks all streams, the model that the lock-free
// interleaver is compared with.
//
// Units: bytes. Owner: the test. Threads: one.
#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <vector>

#include "mux/mux_result.h"
#include "mux/mux_stream_kind.h"

struct OldPacket {
    int number = 0; // tells packets apart
    std::int64_t start = 0;
    std::uint32_t size = 0;
    bool endOfStream = false;
};

struct OldStream {
    MuxStreamKind kind = MuxStreamKind::Other;
    bool active = false;
    bool interleaved = true;
    bool suspended = false;
    bool endOfStreamSeen = false;
    bool writable = true;
    std::uint64_t byteLimit = 2000;
    std::uint64_t queuedBytes = 0;
    std::deque<OldPacket> packets;

    [[nodiscard]] bool IsFinished() const { return !packets.empty() && packets.front().endOfStream; }
};

class OldInterleaver {
  public:
    std::vector<OldStream> streams;

    int Add(size_t index, const OldPacket& packet) {
        if (index >= streams.size()) {
            return kMuxFailed;
        }
        OldStream& stream = streams[index];
        stream.endOfStreamSeen = stream.endOfStreamSeen || packet.endOfStream;
        if (stream.suspended) {
            stream.suspended = false;
            stream.interleaved = true;
        }
        stream.packets.push_back(packet);
        stream.queuedBytes += packet.size;
        if (stream.queuedBytes >= stream.byteLimit) {
            stream.writable = false;
        }
        m_anyAdded = true;
        return kMuxOk;
    }

    // As an attempt whose time is up when its first pass has found nothing.
    int Take(OldPacket& taken) {
        if (stopping) {
            return kMuxStopping;
        }
        if (!m_anyAdded) {
            return kMuxFailed;
        }
        OldStream* chosen = nullptr;
        bool mayChoose = true;
        bool allEnded = true;
        for (OldStream& stream : streams) {
            if (!stream.active || stream.IsFinished()) {
                continue;
            }
            allEnded = false;
            if (!stream.packets.empty() &&
                (chosen == nullptr || stream.packets.front().start < chosen->packets.front().start)) {
                chosen = &stream;
            }
            if (stream.interleaved && stream.packets.empty() && !stream.endOfStreamSeen) {
                mayChoose = false;
            }
        }
        if (allEnded) {
            return kMuxAllEnded;
        }
        if (chosen == nullptr || !mayChoose) {
            return kMuxFailed;
        }
        taken = chosen->packets.front();
        chosen->packets.pop_front();
        chosen->queuedBytes -= taken.size;
        if (chosen->queuedBytes < chosen->byteLimit) {
            chosen->writable = true;
        }
        return kMuxOk;
    }

    [[nodiscard]] bool IsVideoOrAudioQueueFull() const {
        return std::any_of(streams.begin(), streams.end(), [](const OldStream& stream) {
            return stream.kind < MuxStreamKind::Subtitle && !stream.writable;
        });
    }
    void SuspendEmptyStreams() {
        for (OldStream& stream : streams) {
            if (stream.interleaved && stream.packets.empty()) {
                stream.suspended = true;
                stream.interleaved = false;
            }
        }
    }
    void ResumeSubtitles() {
        for (OldStream& stream : streams) {
            if (stream.kind == MuxStreamKind::Subtitle && stream.suspended) {
                stream.interleaved = true;
            }
        }
    }
    [[nodiscard]] std::int64_t NewestStart() const {
        std::int64_t newest = 0;
        bool any = false;
        for (const OldStream& stream : streams) {
            if (!stream.packets.empty()) {
                newest = any ? std::max(newest, stream.packets.back().start) : stream.packets.back().start;
                any = true;
            }
        }
        return newest;
    }

    bool stopping = false;

  private:
    bool m_anyAdded = false;
};
