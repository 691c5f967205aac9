// TrackMeters: measures the blocks of all tracks in the order of the file.
//
// Units: ticks, bytes. Owner: the facts are the survey's. Threads: one. Errors: std::bad_alloc.
#pragma once

#include <map>

#include "report/file_facts.h"
#include "sources/matroska/block_walker.h"
#include "sources/matroska/matroska_file.h"

namespace report {

class TrackMeters {
  public:
    explicit TrackMeters(FileFacts& facts) : m_facts(facts) {}

    void Declare(const matroska::Track& track);
    void Add(const matroska::Block& block);

  private:
    struct Meter {
        size_t track = 0; // in the facts
        bool hasBegun = false;
        bool isText = false;
        UINT64 latestStart = 0;
        UINT64 latestEnd = 0;     // as far as it is known
        UINT64 durationTicks = 0; // of a block, as the track says; 0: not said
    };

    [[nodiscard]] Meter* MeterOf(UINT64 number);
    void MeasureGap(Meter& meter, TrackReport& track, UINT64 start, UINT64 end);
    [[nodiscard]] UINT64 LagOf(UINT64 number, UINT64 start) const;
    void NoteLatest(UINT64 number, UINT64 start);

    FileFacts& m_facts;
    std::map<UINT64, Meter> m_meters; // by the track's number
    // The latest start so far of picture and sound, and that of another track than this one.
    UINT64 m_latestTrack = 0;
    UINT64 m_latest = 0;
    UINT64 m_latestOfOthers = 0;
};

} // namespace report
