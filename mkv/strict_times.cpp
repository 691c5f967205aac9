#include "mkv/strict_times.h"

#include <algorithm>

#include "dshow/ref_time.h"

namespace mkv {

namespace {

// A sum with the shift fits 63 bits of nanoseconds.
constexpr REFERENCE_TIME kLatest = kMaxReferenceTime / kNsPerReferenceTime / 2;

// Halves go up, before 0 too: what lies a whole millisecond apart stays so.
INT64 RoundedMs(REFERENCE_TIME time) {
    const REFERENCE_TIME raised = std::clamp(time, -kLatest, kLatest) + kReferenceTimesPerMs / 2;
    const INT64 quotient = raised / kReferenceTimesPerMs;
    return raised % kReferenceTimesPerMs < 0 ? quotient - 1 : quotient;
}

} // namespace

PacketTimes CStrictTimes::take(REFERENCE_TIME start, REFERENCE_TIME stop) {
    PacketTimes times{RoundedMs(start), RoundedMs(std::max(start, stop))};
    if (!m_isFixed) {
        m_shiftMs = std::max(m_shiftMs, -times.startMs);
    } else if (times.startMs + m_shiftMs < 0) {
        const INT64 missingMs = -m_shiftMs - times.startMs;
        times.startMs += missingMs;
        times.endMs += missingMs;
    }
    return times;
}

} // namespace mkv
