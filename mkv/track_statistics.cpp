#include "mkv/track_statistics.h"

#include <algorithm>

namespace mkv {

void CTrackStatistics::setTracks(const std::vector<UINT64>& uids) {
    m_tracks.assign(uids.size(), {});
    for (size_t i = 0; i < uids.size(); ++i) {
        m_tracks[i].uid = uids[i];
    }
}

void CTrackStatistics::blockWritten(const WrittenBlock& block) noexcept {
    if (block.track == 0 || block.track > m_tracks.size()) {
        return;
    }
    Track& track = m_tracks[block.track - 1U];
    ++track.blocks;
    track.bytes += block.payloadBytes;
    track.startNs = std::min(track.startNs, block.timeNs);
    track.endNs = std::max(track.endNs, block.endNs);
}

UINT64 CTrackStatistics::Track::bitsPerSecond() const {
    constexpr double kBitsInByte = 8;
    constexpr double kNsInSecond = 1e9;
    const UINT64 ns = durationNs();
    const double bits = static_cast<double>(bytes) * kBitsInByte;
    return ns == 0 ? 0 : static_cast<UINT64>(bits * kNsInSecond / static_cast<double>(ns));
}

} // namespace mkv
