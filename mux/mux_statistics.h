// CMuxStatistics: what each input has given in this run, or in the last one; for those who must not take the filter
// lock, at any time.
//
// A stream counts for itself; it is asked while it lives, and what it said last is kept when it goes. So packets cost
// nothing here.
// Units: times in 100 ns. Owner: the filter. Threads: any; one lock, under which nothing else is locked or called.
// Errors: std::bad_alloc from AddInput alone.
#pragma once

#include <optional>
#include <vector>

#include "mux/mux_inter_stream.h"
#include "win/critical_section.h"

class CMuxStatistics {
  public:
    struct Input {
        CMuxInterStream::Figures stream; // all zero for an input that has none
        UINT64 queueLimitBytes = 0;      // 0 for such an input
        UINT64 refused = 0;              // samples that were not taken, and packets that Stop found queued
    };
    struct Run {
        bool isRunning = false;
        INT64 elapsed = 0; // from its start to its end, or until now
    };

    void AddInput();

    // All inputs begin anew.
    void BeginRun();
    // The stream lives until the end of the run.
    void Attach(INT32 input, const CMuxInterStream& stream);
    // Before the streams go. Nothing happens when there is no run.
    void EndRun();
    // A sample of this input did not become a packet. Counts while the run lasts.
    void CountRefused(INT32 input);

    // None for an input that is not there.
    [[nodiscard]] std::optional<Input> Of(INT32 input) const;
    [[nodiscard]] Run GetRun() const;

  private:
    struct Entry {
        const CMuxInterStream* stream = nullptr; // not owned; while the run lasts
        Input kept;
    };
    // Null for an input that is not there.
    [[nodiscard]] Entry* Find(INT32 input) QRX_REQUIRES(m_lock);

    mutable win::CriticalSection m_lock;
    std::vector<Entry> m_inputs QRX_GUARDED_BY(m_lock);
    bool m_isRunning QRX_GUARDED_BY(m_lock) = false;
    INT64 m_begin QRX_GUARDED_BY(m_lock) = 0;
    INT64 m_end QRX_GUARDED_BY(m_lock) = 0;
};
