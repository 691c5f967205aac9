// CTrackStatistics: how much of each track the file holds.
// Units: nanoseconds, bytes of payload. Owner: the file being written. Threads: the writer's.
// Errors: std::bad_alloc, from setTracks alone.
#pragma once

#include <limits>
#include <vector>

#include "mkv/block_observer.h"

namespace mkv {

class CTrackStatistics final : public CBlockObserver {
  public:
    struct Track {
        UINT64 uid = 0;
        UINT64 blocks = 0;
        UINT64 bytes = 0;
        UINT64 startNs = std::numeric_limits<UINT64>::max(); // of its earliest block
        UINT64 endNs = 0;                                    // of the block that ends last

        [[nodiscard]] UINT64 durationNs() const { return endNs > startNs ? endNs - startNs : 0; }
        // The whole bits of a second, on average; 0 when nothing lasts.
        [[nodiscard]] UINT64 bitsPerSecond() const;
    };

    // By their numbers from 1; nothing is counted of others.
    void setTracks(const std::vector<UINT64>& uids);
    void blockWritten(const WrittenBlock& block) noexcept override;
    [[nodiscard]] const std::vector<Track>& tracks() const { return m_tracks; }

  private:
    std::vector<Track> m_tracks;
};

} // namespace mkv
