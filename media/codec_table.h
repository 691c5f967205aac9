// The codec table: which media types an input takes, what each becomes in a track, and how a track becomes a media type
// again. A codec more is a row more, and a layout of its own where none of the others fits.
#pragma once

#include <optional>
#include <span>

#include "dshow/media_type.h"
#include "media/codec_description.h"
#include "media/format_block.h"
#include "media/track_facts.h"

namespace media {

struct CodecRow;

// What a codec keeps in its format block and in the track's private data, read and built.
struct CodecLayout {
    // False when the format block does not hold what it claims; the description is then of no use.
    bool (*describe)(const FormatBlock& block, CodecDescription& description);
    // None when the private data is damaged, or when the type would belong to another row. Null when no track comes
    // back as this row's type.
    std::optional<CMediaType> (*typeOf)(const CodecRow& row, const TrackFacts& track) = nullptr;
    // Whether the type leaves out a part of what the track says: another one goes before it. Null: it never does.
    bool (*leavesOut)(const TrackFacts& track) = nullptr;
    bool hasStartCodes = false; // in the samples, which Matroska wants with lengths
};

enum class Acceptance {
    Refused,       // written for other users of the writer; an input does not take it
    AsMapped,      // taken when the row maps it
    WithAnyFormat, // taken for its subtype alone; with another format it may have no row when streaming starts
};

struct CodecRow {
    const GUID* major;
    const GUID* subtype; // null: any
    const GUID* format;  // null: any
    Acceptance acceptance;
    const char* codecId;
    const CodecLayout* layout;
    const char* readFrom = nullptr; // identifier of the tracks that come back as this type; null: codecId

    // Whether the row maps the type.
    [[nodiscard]] bool Matches(const AM_MEDIA_TYPE& type) const;
    // Whether an input takes the type because of this row.
    [[nodiscard]] bool Accepts(const AM_MEDIA_TYPE& type) const;
    // Whether the track can come back as this row's type.
    [[nodiscard]] bool ReadsFrom(const TrackFacts& track) const;
};

// In the order in which the rows are tried, both ways.
[[nodiscard]] std::span<const CodecRow> CodecTable();

// The first row that maps the type; null when there is none.
[[nodiscard]] const CodecRow* FindCodecRow(const AM_MEDIA_TYPE& type);

} // namespace media
