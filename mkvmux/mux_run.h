// MuxRun: runs a graph to its end, or to an interruption, and finalises the file.
//
// Threads: one; it sleeps until the graph or the user has something to say, or the progress is due.
// Errors: Failure; the graph is stopped whichever way the run ends, as far as its filters let themselves be stopped.
#pragma once

#include <set>
#include <string>

#include "mkvmux/console.h"
#include "mkvmux/interruption.h"
#include "mkvmux/mux_graph.h"
#include "mkvmux/progress_display.h"
#include "mkvmux/progress_meter.h"
#include "mkvmux/status_display.h"

namespace mkvmux {

class MuxRun {
  public:
    MuxRun(const MuxGraph& graph, const Interruption& interruption, Console& console, ProgressDisplay& display,
           StatusDisplay& status);
    ~MuxRun();
    MuxRun(const MuxRun&) = delete;
    MuxRun& operator=(const MuxRun&) = delete;

    // Throws when the streams cannot start; nothing of them is in the file then.
    void Start();
    // Returns at the end of all streams or when interrupted.
    void Wait();
    // Stops the graph, in which the muxer finalises the file.
    void Finish();
    // Stops the graph if that was not done. False when a filter does not stop: the file is as finished as it can be,
    // but the graph must not be touched again, and the process can only be left at once.
    [[nodiscard]] bool Stop();

  private:
    void ShowProgress();
    // Before what stays is printed.
    void FinishDisplays();
    // Whether one of the graph's events was the end.
    [[nodiscard]] bool HandleEvents();
    [[nodiscard]] bool HandleEvent(LONG code, LONG_PTR first, LONG_PTR second);
    void HandleLeftEvents();
    void WarnOfIndex(LONG_PTR bytes, LONG_PTR placeBytes);
    void WarnOfDamage(HRESULT damage);
    void ThrowIfOutputFailed() const;

    const MuxGraph& m_graph;
    const Interruption& m_interruption;
    Console& m_console;
    ProgressDisplay& m_display;
    StatusDisplay& m_status;
    ProgressMeter m_meter;
    win::ComPtr<IMediaControl> m_control;
    win::ComPtr<IMediaEvent> m_events;
    std::set<std::string> m_toldDamages;
    bool m_started = false;
    bool m_isStuck = false;
};

} // namespace mkvmux
