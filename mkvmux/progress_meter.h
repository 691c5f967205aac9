// ProgressMeter: how much of the inputs has reached the file.
//
// Units: percent. The muxer's own position counts against the longest stream where both are known; otherwise the
// bytes written count against the bytes of the inputs, which is nearly the same, since nothing is recoded.
#pragma once

#include "mkvmux/mux_graph.h"

namespace mkvmux {

class ProgressMeter {
  public:
    explicit ProgressMeter(const MuxGraph& graph);

    // Below 100, since the file is finished only after the end of the streams.
    [[nodiscard]] int Percent() const;

  private:
    const MuxGraph& m_graph;
    REFERENCE_TIME m_duration = 0; // of the longest stream, in units of 100 ns; 0 when unknown
    UINT64 m_inputBytes = 0;
};

} // namespace mkvmux
