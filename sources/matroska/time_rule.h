// Which times the packets of a Matroska file have.
#pragma once

namespace matroska {

enum class TimeRule {
    AsStored, // the blocks'
    // Those that a strict file needs so that it sounds as this one does: the track's codec delay is exchanged for the
    // one that such a file gets, Opus packets stop where their sound does, to the sample, and where the tracks have to
    // move, they move by whole milliseconds.
    Exact,
};

} // namespace matroska
