// DumpLayout: a Matroska file as text for golden files, one element a line.
//
// Positions in the seek head and in the cues are shown as what they point at. Values that differ from run to run are
// masked; where the length of an element depends on such a value, the length is masked with it.
// Units: bytes from the file's start; block times in milliseconds. Errors: the layout's problems end the dump.
#pragma once

#include <set>
#include <string>

#include "tests/support/matroska_layout.h"

namespace test_support {

struct DumpOptions {
    bool offsets = false; // they depend on masked values, too
    // The version text is longer in a release; track identifiers are random.
    std::set<uint32_t> masked{ebml_id::kWritingApp, ebml_id::kTrackUid};
};

[[nodiscard]] std::string DumpLayout(const MatroskaLayout& layout, const DumpOptions& options = {});
[[nodiscard]] std::string DumpLayout(ByteView file, const DumpOptions& options = {});

} // namespace test_support
