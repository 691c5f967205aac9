// FrameTimes: from the ticks of a file to 100 ns.
//
// Units: as named. Threads: any. Errors: a time that is no sane one is none.
#pragma once

#include <optional>

#include "win/platform.h"

namespace matroska {

class FrameTimes {
  public:
    explicit FrameTimes(UINT64 timestampScaleNs) : m_scaleNs(timestampScaleNs) {}

    [[nodiscard]] std::optional<INT64> NsOf(INT64 ticks) const;
    [[nodiscard]] static REFERENCE_TIME RefTimeOf(INT64 ns);

  private:
    UINT64 m_scaleNs;
};

} // namespace matroska
