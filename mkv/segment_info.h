// The Info element of the file.
#pragma once

#include <matroska/KaxInfo.h>

namespace mkv {

// As the applications that read it see it; not asked of the library.
inline constexpr const char* kMuxingAppText = "libmatroska 1.4.1";
// The module's version text follows; the name ends with the blank when there is none.
inline constexpr const char* kWritingAppPrefix = "Quorlex Matroska Muxer ";

void WriteSegmentInfo(libmatroska::KaxInfo& info, double durationNs);

} // namespace mkv
