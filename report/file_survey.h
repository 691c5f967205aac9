// FileSurvey: reads a Matroska or WebM file of any writer once, from its start to its end, and finds what a report of
// it shows. Takes two short reads a block, and memory that does not grow with the file.
//
// Units: bytes from the file's start. Owner: holds a view of the source. Threads: one.
// Errors: NoMatroskaFile; what the progress throws; std::bad_alloc. Damage is passed over and told.
#pragma once

#include <functional>
#include <stdexcept>

#include "report/element_tree.h"
#include "report/file_facts.h"
#include "report/track_meter.h"
#include "sources/base/limits.h"
#include "sources/matroska/ebml_reader.h"

namespace report {

// Told how far the file is read; it may throw to end the survey.
using Progress = std::function<void(UINT64 done, UINT64 all)>;

class NoMatroskaFile : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class FileSurvey {
  public:
    FileSurvey(const source::ByteSource& source, Progress progress)
        : m_reader(source), m_progress(std::move(progress)), m_tree(m_reader), m_meters(m_facts) {}

    // Once.
    [[nodiscard]] FileFacts Read();

  private:
    [[nodiscard]] UINT64 ReadHead();
    void ReadSegment(const matroska::Element& segment);
    // Where the next element is looked for.
    [[nodiscard]] UINT64 ReadElement(UINT64 position, const matroska::Element& segment);
    [[nodiscard]] UINT64 ReadCluster(matroska::Element cluster, const matroska::Element& segment);
    [[nodiscard]] UINT64 EndOfCluster(const matroska::Element& cluster) const;
    // The cluster's timestamp.
    UINT64 ReadBlocks(const matroska::Element& cluster);
    void ReadInfo(const matroska::Element& info);
    void ReadTracks(const matroska::Element& tracks);
    void ReadCues(const matroska::Element& cues, const matroska::Element& segment);
    void ReadCuePoint(const matroska::Element& point, const matroska::Element& segment);
    void AddPiece(const std::string& name, UINT64 start, UINT64 end);
    void AddDamage(UINT64 from, UINT64 to, const std::string& what);

    const matroska::EbmlReader m_reader;
    const Progress m_progress;
    FileFacts m_facts;
    ElementTree m_tree;
    TrackMeters m_meters;
    UINT64 m_privateRoom = source::kMaxPrivateBytes;
};

} // namespace report
