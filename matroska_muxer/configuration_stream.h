// The filter's configuration as bytes, the body behind the version header of its persisted stream: little-endian,
// without padding, every field one call on the stream.
//
// Units: string lengths of rows in UTF-16 code units, of attachments in bytes. Owner: what is read is copied.
// Errors: the stream's, HRESULT_FROM_WIN32(ERROR_HANDLE_EOF) when it ends early; std::bad_alloc.
#pragma once

#include "records/track_settings_table.h"
#include "mkv/mkv_writer.h"
#include "win/platform.h"

[[nodiscard]] HRESULT WriteConfiguration(IStream& stream, const records::CTrackSettingsTable& settings,
                                         const CMkvWriter& writer);

// Replaces the rows, sets the document type and adds the attachments. Rows that were read before an error stay. A
// length is believed only as far as its bytes arrive.
[[nodiscard]] HRESULT ReadConfiguration(IStream& stream, records::CTrackSettingsTable& settings, CMkvWriter& writer);
