// RunFigures: what the muxer tells of a run, and how the user is told: a short line while it lasts, a table at its end.
//
// Units: times in 100 ns. Threads: any, one at a time.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <qrx_mkvmuxer.h>

#include "win/platform.h"

namespace mkvmux {

class MuxGraph;

struct RunFigures {
    struct Track {
        size_t number = 0; // what users name it by
        MuxInputStatistics input{};
    };

    MuxStatistics file{};
    REFERENCE_TIME length = 0; // of what is in the file
    std::vector<Track> tracks;
};

// As of now; zeros where the muxer does not tell.
[[nodiscard]] RunFigures ReadFigures(const MuxGraph& graph);

// No longer than the columns: "0:01:23 in 12 s, 34.5 MB, 67 clusters, Write 2 % (longest 0.003 s), queued 0: 1.2 MB".
[[nodiscard]] std::string StatusLine(const RunFigures& figures, size_t columns);

// A line for the names of the columns, one a track, and one about the file.
[[nodiscard]] std::string FiguresTable(const RunFigures& figures);

} // namespace mkvmux
