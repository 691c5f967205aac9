// FrameQueue: gives the frames of blocks their times, and holds those whose duration only the next block shows, as long
// as they are few.
//
// Units: nanoseconds from the start of the segment; packets in 100 ns. Owner: the reader. Threads: one at a time.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "sources/base/packet_reader.h"

namespace matroska {

class FrameQueue {
  public:
    // fileEndNs: where the file says that it ends; 0 when it does not say.
    explicit FrameQueue(double fileEndNs) : m_fileEndNs(fileEndNs) {}

    // For the next stream; a duration of 0 is none. Its times are so much later than the file has them.
    void AddStream(bool isSubtitle, UINT64 defaultDurationNs, INT64 delayNs = 0);
    // Added to all times from now on, so that none is below zero.
    void SetShift(REFERENCE_TIME shift) { m_shift = shift; }
    void Clear();

    // The frames of one block in order, which are taken out of there. Those without data take their time, and are not
    // given out.
    void Add(size_t stream, INT64 startNs, std::optional<INT64> blockNs, std::vector<source::Packet>&& frames);
    // The same of frames whose lengths are known, one each; 0 is not known.
    void AddTimed(size_t stream, INT64 startNs, std::span<const INT64> lengthsNs, std::vector<source::Packet>&& frames);
    // No more blocks come.
    void End();
    // False when there is none at present.
    [[nodiscard]] bool Take(source::Packet& packet);

  private:
    struct Stream {
        bool isSubtitle = false;
        INT64 defaultDurationNs = 0;
        INT64 delayNs = 0;
        std::vector<source::Packet> waiting; // for the next block of the stream
        INT64 startNs = 0;                   // of the waiting ones
        INT64 lastFrameNs = 0;               // what the ones before lasted
    };

    void ReleaseBefore(Stream& stream, std::optional<INT64> nextStartNs);
    void ReleaseLate(INT64 nowNs);
    void ReleaseAll();
    void SendWaiting(Stream& stream, std::optional<INT64> frameNs);
    void Send(std::vector<source::Packet>& frames, INT64 startNs, std::optional<INT64> frameNs);
    void SendFrame(source::Packet& packet, INT64 startNs, std::optional<INT64> frameNs);
    [[nodiscard]] std::optional<INT64> LastFrameNs(const Stream& stream) const;

    const double m_fileEndNs;
    REFERENCE_TIME m_shift = 0;
    std::vector<Stream> m_streams;
    std::vector<source::Packet> m_queue;
    size_t m_next = 0;         // in the queue
    size_t m_waitingBytes = 0; // of all streams
};

} // namespace matroska
