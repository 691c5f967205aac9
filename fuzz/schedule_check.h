// What must hold of the file of a run, whatever the threads did; and what must hold of a run that nothing disturbed.
//
// Errors: each check ends the program, after a line that says what is wrong.
#pragma once

#include <vector>

#include "fuzz/planned_stream.h"
#include "fuzz/schedule_feeder.h"
#include "tests/support/matroska_layout.h"

namespace fuzz {

using Feeders = std::vector<Feeder>;

// The reader accepts the whole file.
void CheckLayoutOf(const test_support::MatroskaLayout& layout);

// Each track holds the samples of one feeder, whole, in the order in which it sent them, each once at most.
void CheckOrder(const test_support::MatroskaLayout& layout, const Feeders& feeders);

// Each feeder whose pin took a sample has a track, which holds all of them, put together to frames as the rule says,
// with their times and flags.
void CheckAllThere(const test_support::MatroskaLayout& layout, const Feeders& feeders);

// Each cluster of whose bytes a write said that it took them lies where it was written; the reader finds it there when
// the head arrived, no patch of it was torn, and no seek was refused.
void CheckTakenClusters(const PlannedStream& stream);

} // namespace fuzz
