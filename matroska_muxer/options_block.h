// The options in a saved configuration: a block of tagged fields, little-endian, behind the fields that every
// configuration has.
//
// Units: bytes. Owner: values. Errors: throws StreamFailure: VFW_E_INVALID_FILE_FORMAT for a block that is damaged,
// HRESULT_FROM_WIN32(ERROR_HANDLE_EOF) when the stream ends early; std::bad_alloc. Memory: what a title and the
// lists may hold.
#pragma once

#include "matroska_muxer/field_stream.h"
#include "records/file_options.h"

// What differs from its default, a field each.
void WriteOptionsBlock(CFieldWriter& out, const records::AllOptions& options);

// Exactly the block; fields with unknown tags are skipped, of two with one tag the later counts.
[[nodiscard]] records::AllOptions ReadOptionsBlock(CFieldReader& in);
