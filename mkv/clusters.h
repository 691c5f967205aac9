// CClusters: from packets to blocks in clusters, as one of the profiles asks: CClusterWriter or CStrictClusterWriter.
// Units: packets in 100 ns, all else in nanoseconds and bytes. Owner: the file being written; segment, cues and tracks
// outlive it. Threads: the writer's. Errors: kTrackOutOfRangeError, kUnsupportedTypeError, what the
// output throws, std::bad_alloc; the cluster that could not be written is dropped then, and the next packet opens
// another.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include <matroska/KaxSegment.h>
#include <matroska/KaxTracks.h>

#include "mkv/block_observer.h"
#include "mkv/gathering_io.h"
#include "mkv/mkv_cues.h"
#include "mkv/track_payload.h"
#include "mkv/writer_input.h"

namespace mkv {

inline constexpr INT32 kNoCueTrack = -1;

class CClusters {
  public:
    virtual ~CClusters() = default;
    CClusters(const CClusters&) = delete;
    CClusters& operator=(const CClusters&) = delete;

    // The entries of the tracks, in their order; the track whose keyframes begin clusters and are cue points, where the
    // profile does not choose itself.
    virtual void setTracks(const TrackList& tracks, const std::vector<libmatroska::KaxTrackEntry*>& entries,
                           INT32 cueTrack) = 0;
    [[nodiscard]] size_t trackEntryCount() const { return m_tracks.size(); }
    // Where the profile tells of its blocks. It outlives this; null for nobody.
    void observe(CBlockObserver* observer) noexcept { m_observer = observer; }
    // Where the profile tells of the first keyframe of each track, as its block has it, once that is in the open
    // cluster. What it throws, the frame's packet does.
    using FirstKeyframe = std::function<void(UINT32 stream, std::span<const BYTE> frame)>;
    void onFirstKeyframes(FirstKeyframe tell) { m_firstKeyframe = std::move(tell); }
    // Somebody watches the file while it grows: clusters end sooner, where the profile is free to.
    virtual void writeLive() noexcept {}
    // The largest end time of the blocks whose clusters were written.
    [[nodiscard]] UINT64 writtenEndNs() const { return m_writtenEndNs; }
    // How many they are.
    [[nodiscard]] UINT64 writtenCount() const { return m_writtenCount; }

    // Instead of starting the first one: clusters that end there were written before.
    void resumeBehind(UINT64 endNs) noexcept { m_openEndNs = m_writtenEndNs = endNs; }
    virtual void startCluster(UINT64 timeNs) = 0;
    // Writes the current cluster, even one without blocks; nothing when there is none. One that a failed write lost
    // leaves neither size nor cue points.
    void flushCluster();
    // An end time of the blocks so far, that of this one at least; none when the packet left no payload.
    virtual std::optional<UINT64> addFrameToCurrentCluster(const Packet& packet) = 0;

    // Whether decoding can begin with the packet; of sound and texts with any.
    [[nodiscard]] virtual bool isKeyframe(const Packet& packet) const = 0;
    // How much later than its packets a track's blocks are, in units of 100 ns.
    [[nodiscard]] virtual REFERENCE_TIME shiftOf(UINT32 stream) const = 0;
    // Of the blocks that wait in the open cluster.
    [[nodiscard]] virtual UINT64 openBytes() const = 0;

  protected:
    CClusters(CGatheringIO& io, const libmatroska::KaxSegment& segment, CMkvCues& cues)
        : m_io(io), m_segment(segment), m_cues(cues) {}

    [[nodiscard]] virtual bool hasCluster() const = 0;
    virtual void writeCluster(CGatheringIO& io) = 0;
    virtual void closeCluster() noexcept = 0;
    // It was written.
    virtual void keepFacts() noexcept {}

    // What of each track tells that its packets become other bytes.
    using NeedsConversion = bool (*)(const AM_MEDIA_TYPE& type);
    void keepTracks(const TrackList& tracks, const std::vector<libmatroska::KaxTrackEntry*>& entries,
                    NeedsConversion needsConversion);
    // Throws kTrackOutOfRangeError.
    [[nodiscard]] const TrackFacts& trackOf(const Packet& packet) const;
    [[nodiscard]] CMkvCues& cues() { return m_cues; }
    [[nodiscard]] CBlockObserver* observer() const { return m_observer; }
    void tellIfFirstKeyframe(UINT32 stream, bool isKeyframe, std::span<const BYTE> frame);
    [[nodiscard]] UINT64 openEndNs() const { return m_openEndNs; }
    void setOpenEnd(UINT64 endNs) noexcept { m_openEndNs = endNs; }

  private:
    void dropFacts() noexcept;

    CGatheringIO& m_io;
    const libmatroska::KaxSegment& m_segment;
    CMkvCues& m_cues;
    std::vector<TrackFacts> m_tracks;
    CBlockObserver* m_observer = nullptr;
    FirstKeyframe m_firstKeyframe;
    std::vector<bool> m_hadKeyframe; // by track
    UINT64 m_openEndNs = 0;          // the largest end time of the open cluster's blocks and of those written
    UINT64 m_writtenEndNs = 0;
    UINT64 m_writtenCount = 0;
};

[[nodiscard]] std::unique_ptr<CClusters> MakeClusters(bool isStrict, CGatheringIO& io,
                                                      const libmatroska::KaxSegment& segment, CMkvCues& cues);

// Tells of a packet's block, where somebody debugs.
void TraceFrame(UINT32 stream, UINT64 timeNs, UINT64 durationNs);

} // namespace mkv
