// The Chapters of a file: one edition, in the order of their times, each with its parts.
// Units: records in 100 ns. Threads: the writer's. Errors: std::bad_alloc; what the system's random numbers throw.
#pragma once

#include <memory>
#include <vector>

#include <matroska/KaxChapters.h>

#include "mkv/chapter_identifiers.h"
#include "records/chapter.h"

namespace mkv {

// Null for none. WebM has less to say of a chapter.
[[nodiscard]] std::unique_ptr<libmatroska::KaxChapters> MakeChapters(const std::vector<records::Chapter>& chapters,
                                                                     bool isWebM, CChapterIdentifiers& identifiers);

} // namespace mkv
