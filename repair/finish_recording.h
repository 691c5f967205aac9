// Finishes a recording that was cut off, in the file itself: what is torn at its end goes, cues come behind, and the
// head gets what the muxer would have written at Stop. The clusters that are whole stay as they are. It can be ended
// at any moment and begun again: the last thing written is what makes the file finished.
//
// Units: bytes, nanoseconds. Threads: one. Errors: Refusal, from the survey; WriteFailure; std::bad_alloc.
#pragma once

#include "repair/recording_survey.h"

namespace repair {

// The file could not be written; it can be repaired again.
struct WriteFailure {
    HRESULT hr;
};

// Reads a stream that can be sought. Progress may throw.
[[nodiscard]] Recording SurveyRecording(IStream& stream, Progress progress);

// Writes what is missing into that stream, which can be truncated; nothing when it is finished already.
void FinishRecording(IStream& stream, const Recording& recording);

} // namespace repair
