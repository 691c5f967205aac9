// CueRule: of which blocks a repaired recording gets cue points. A survey reads no further into a cluster than to where
// they are while recording: a keyframe begins a cluster, but for those of the first one.
//
// Owner: holds a view of the head. Threads: one. Errors: none.
#pragma once

#include <memory>

#include "media/track_type.h"
#include "repair/recording_head.h"
#include "sources/matroska/block_walker.h"

namespace repair {

class CueRule {
  public:
    [[nodiscard]] static std::unique_ptr<CueRule> Of(const RecordingHead& head);

    virtual ~CueRule() = default;
    CueRule(const CueRule&) = delete;
    CueRule& operator=(const CueRule&) = delete;

    // The block is of a track of the recording.
    [[nodiscard]] virtual bool IsPoint(const matroska::Block& block) const = 0;
    // Whether points may come behind that block in its cluster.
    [[nodiscard]] virtual bool GoesOnBehind(const matroska::Block& block, bool isFirstCluster) const = 0;

  protected:
    explicit CueRule(const RecordingHead& head) : m_head(head) {}

    [[nodiscard]] bool IsOfCueTrack(const matroska::Block& block) const { return block.track == m_head.cueTrack; }
    [[nodiscard]] bool HasCueTrack() const { return m_head.cueTrack != 0; }
    [[nodiscard]] bool HasCueVideo() const { return IsOfType(m_head.cueTrack, media::kTrackTypeVideo); }
    [[nodiscard]] bool IsText(UINT64 track) const { return IsOfType(track, media::kTrackTypeSubtitle); }

  private:
    [[nodiscard]] bool IsOfType(UINT64 track, INT32 type) const {
        const auto found = m_head.trackOf.find(track);
        return found != m_head.trackOf.end() && found->second.type == static_cast<UINT64>(type);
    }

    const RecordingHead& m_head;
};

} // namespace repair
