#include "sources/matroska/frame_queue.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "sources/matroska/frame_times.h"

namespace matroska {

namespace {

// 41 days: the sum of a whole block's frames stays within 64 bits.
constexpr INT64 kMaxFrameNs = INT64{1000} * 3600 * 1'000'000'000;
// The file may be long because of another track.
constexpr double kMaxLastFrameNs = 10e9;
// So that nobody waits for a picture because the next one of its track is far away.
constexpr INT64 kMaxWaitNs = 1'000'000'000;
// And so that a block of each of many tracks does not fill the memory.
constexpr size_t kMaxWaitingBytes = 64 * source::kMiB;

size_t BytesOf(const std::vector<source::Packet>& frames) {
    return std::accumulate(frames.begin(), frames.end(), size_t{0},
                           [](size_t sum, const source::Packet& frame) { return sum + frame.data.size(); });
}

} // namespace

void FrameQueue::AddStream(bool isSubtitle, UINT64 defaultDurationNs, INT64 delayNs) {
    const bool isSane = defaultDurationNs <= static_cast<UINT64>(kMaxFrameNs);
    m_streams.push_back({isSubtitle, isSane ? static_cast<INT64>(defaultDurationNs) : 0, delayNs, {}, 0, 0});
}

void FrameQueue::Clear() {
    m_queue.clear();
    m_next = 0;
    m_waitingBytes = 0;
    for (Stream& stream : m_streams) {
        stream.waiting.clear();
        stream.lastFrameNs = 0;
    }
}

void FrameQueue::Add(size_t index, INT64 startNs, std::optional<INT64> blockNs, std::vector<source::Packet>&& frames) {
    Stream& stream = m_streams[index];
    ReleaseBefore(stream, startNs);
    ReleaseLate(startNs);
    const auto count = static_cast<INT64>(frames.size());
    const bool hasDefault = stream.defaultDurationNs > 0;
    if (blockNs && count > 0 && (count == 1 || !hasDefault)) {
        Send(frames, startNs, *blockNs / count);
    } else if (hasDefault) {
        Send(frames, startNs, stream.defaultDurationNs);
    } else if (count == 1 && stream.isSubtitle) {
        Send(frames, startNs, {}); // the next one may be minutes away
    } else {
        stream.waiting.swap(frames); // for an empty one
        stream.startNs = startNs;
        m_waitingBytes += BytesOf(stream.waiting);
        if (m_waitingBytes > kMaxWaitingBytes) {
            ReleaseAll();
        }
    }
}

void FrameQueue::AddTimed(size_t index, INT64 startNs, std::span<const INT64> lengthsNs,
                          std::vector<source::Packet>&& frames) {
    ReleaseBefore(m_streams[index], startNs);
    ReleaseLate(startNs);
    for (size_t i = 0; i < std::min(frames.size(), lengthsNs.size()); ++i) {
        SendFrame(frames[i], startNs, lengthsNs[i] > 0 ? std::optional(lengthsNs[i]) : std::nullopt);
        startNs += lengthsNs[i];
    }
    frames.clear();
}

void FrameQueue::End() {
    for (Stream& stream : m_streams) {
        ReleaseBefore(stream, {});
    }
}

bool FrameQueue::Take(source::Packet& packet) {
    if (m_next == m_queue.size()) {
        m_queue.clear();
        m_next = 0;
        return false;
    }
    packet = std::move(m_queue[m_next++]);
    return true;
}

// A frame alone stays without a duration, as it is in the file; but the last one makes the file as long as it says
// that it is. Several frames share the time until the next block.
void FrameQueue::ReleaseBefore(Stream& stream, std::optional<INT64> nextStartNs) {
    const size_t count = stream.waiting.size();
    if (count == 1) {
        SendWaiting(stream, nextStartNs ? std::nullopt : LastFrameNs(stream));
        return;
    }
    if (count > 0 && nextStartNs && *nextStartNs > stream.startNs) {
        const INT64 shared = (*nextStartNs - stream.startNs) / static_cast<INT64>(count);
        stream.lastFrameNs = std::min(shared, kMaxFrameNs);
    }
    SendWaiting(stream, stream.lastFrameNs);
}

void FrameQueue::ReleaseLate(INT64 nowNs) {
    for (Stream& stream : m_streams) {
        if (stream.waiting.size() == 1 && nowNs - stream.startNs > kMaxWaitNs) {
            SendWaiting(stream, {});
        }
    }
}

// Without knowing the next block: a frame alone gets no duration, several get that of the ones before.
void FrameQueue::ReleaseAll() {
    for (Stream& stream : m_streams) {
        const bool isAlone = stream.waiting.size() == 1;
        SendWaiting(stream, isAlone ? std::nullopt : std::optional(stream.lastFrameNs));
    }
}

void FrameQueue::SendWaiting(Stream& stream, std::optional<INT64> frameNs) {
    m_waitingBytes -= BytesOf(stream.waiting);
    Send(stream.waiting, stream.startNs, frameNs);
}

std::optional<INT64> FrameQueue::LastFrameNs(const Stream& stream) const {
    const double lastNs = m_fileEndNs - static_cast<double>(stream.startNs - stream.delayNs);
    const bool isSane = lastNs > 0 && lastNs <= kMaxLastFrameNs;
    return isSane ? std::optional(static_cast<INT64>(lastNs)) : std::nullopt;
}

void FrameQueue::Send(std::vector<source::Packet>& frames, INT64 startNs, std::optional<INT64> frameNs) {
    for (source::Packet& packet : frames) {
        SendFrame(packet, startNs, frameNs);
        startNs += frameNs.value_or(0);
    }
    frames.clear();
}

void FrameQueue::SendFrame(source::Packet& packet, INT64 startNs, std::optional<INT64> frameNs) {
    packet.start = FrameTimes::RefTimeOf(startNs) + m_shift;
    packet.stop = FrameTimes::RefTimeOf(startNs + frameNs.value_or(0)) + m_shift;
    packet.hasStop = frameNs.has_value();
    if (!packet.data.empty()) {
        m_queue.push_back(std::move(packet));
    }
}

} // namespace matroska
