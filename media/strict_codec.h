// StrictCodec: what the strict description does to one codec. Private data gets the form that the standards ask for,
// and what the codec's own header knows better than the format block comes from there.
#pragma once

#include <string_view>

#include "media/codec_description.h"
#include "media/codec_table.h"
#include "media/format_block.h"

namespace media {

struct StrictCodec {
    std::string_view codecId; // as the codec table has it
    // Refines what the row's layout made of the block; of a FORMAT_MPEG2Video block, the private data is the sequence
    // header itself. False when the codec cannot be written.
    bool (*refine)(const CodecRow& row, const FormatBlock& block, CodecDescription& description);
};

} // namespace media
