// What WebM takes of Matroska's codecs, as its container guidelines list them.
//
// Threads: any. Errors: none.
#pragma once

#include <string_view>

namespace media {

[[nodiscard]] bool IsInWebmSubset(std::string_view codecId);

} // namespace media
