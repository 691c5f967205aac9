// The records of a saved configuration, field by field: little-endian, without padding, every field one call on the
// stream.
//
// Units: string lengths of rows in UTF-16 code units, of attachments in bytes. Owner: what is read is copied.
// Errors: throws StreamFailure, HRESULT_FROM_WIN32(ERROR_HANDLE_EOF) when the stream ends early; std::bad_alloc. A
// length is believed only as far as its bytes arrive.
#pragma once

#include <qrx_mkvmuxer.h>

#include "matroska_muxer/field_stream.h"
#include "records/track_settings_row.h"

class CMkvWriter;

void WriteRow(CFieldWriter& out, const TrackSettings& row);
[[nodiscard]] records::CTrackSettingsRow ReadRow(CFieldReader& in);

void WriteAttachment(CFieldWriter& out, const MuxAttachment& attachment);
// Hands it to the writer, which copies it.
void ReadAttachment(CFieldReader& in, CMkvWriter& writer);
