// RecordingSurvey: reads a recording of the muxer as far as is needed to finish it: the head, the head of each cluster
// with its first block, and the last clusters as a whole. So it takes a read a cluster, whatever lies inside.
//
// Units: bytes from the file's start, nanoseconds. Owner: holds a view of the source. Threads: one.
// Errors: Refusal for what is no such recording, or is damaged elsewhere than at its end; std::bad_alloc.
#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "mkv/cut_recording.h"
#include "repair/cue_rule.h"
#include "repair/recording_head.h"
#include "sources/matroska/block_walker.h"

namespace repair {

// Told how far the file is read; it may throw to end the survey.
using Progress = std::function<void(UINT64 done, UINT64 all)>;

struct Recording {
    bool isFinished = false; // by the muxer itself: nothing else is known then
    mkv::CutRecording cut;
    UINT64 fileBytes = 0;
    UINT64 clusters = 0;
};

class RecordingSurvey {
  public:
    RecordingSurvey(const source::ByteSource& source, Progress progress)
        : m_reader(source), m_progress(std::move(progress)), m_head(ReadRecordingHead(m_reader)),
          m_cueRule(CueRule::Of(m_head)) {}

    [[nodiscard]] Recording Read();

  private:
    struct Cluster {
        matroska::Element element;
        size_t pointsBefore = 0; // cue points of the clusters before it
    };

    [[nodiscard]] UINT64 ReadClusters(UINT64 position);
    [[nodiscard]] bool TakeHeadElement(const matroska::Element& element);
    // Whether the element in front of the clusters is, or was, kept for the cues, or is of no meaning.
    [[nodiscard]] bool TakeIndexPlace(const matroska::Element& element);
    void AddCluster(const matroska::Element& cluster);
    void AddCuePoints(const matroska::Element& cluster, bool isFirst);
    void AddCuePoint(const matroska::Block& block, const matroska::Element& cluster);
    void DropTornClusters();
    void CheckTail(UINT64 position) const;
    [[nodiscard]] bool EndsFinished(UINT64 position) const;
    void FindDuration();
    [[nodiscard]] UINT64 Size() const { return m_reader.Source().Size(); }

    const matroska::EbmlReader m_reader;
    const Progress m_progress;
    const RecordingHead m_head;
    const std::unique_ptr<CueRule> m_cueRule;
    Recording m_recording;
    std::deque<Cluster> m_last; // of the clusters
};

} // namespace repair
