// What cannot go into a WebM file is refused before a byte of it is written.
//
// Errors: NotWebmError, std::bad_alloc.
#pragma once

#include <optional>
#include <stdexcept>

#include "mkv/writer_input.h"

namespace mkv {

// Its text names what is refused.
struct NotWebmError : std::runtime_error {
    NotWebmError(const std::string& refused, std::optional<INT32> refusedInput)
        : std::runtime_error(refused + " cannot go into a WebM file"), input(refusedInput) {}

    std::optional<INT32> input; // from 0; none for an attachment
};

// Of several the first track, then attachments. A track without any codec is left to whoever describes it.
void RefuseWhatIsNotWebm(const TrackList& tracks, bool hasAttachments);

} // namespace mkv
