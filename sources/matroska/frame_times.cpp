#include "sources/matroska/frame_times.h"

#include "dshow/ref_time.h"

namespace matroska {

namespace {

// 36 years: sums of a few such times still fit 64 bits.
constexpr UINT64 kMaxNs = UINT64{1} << 60;

} // namespace

std::optional<INT64> FrameTimes::NsOf(INT64 ticks) const {
    const UINT64 distance = ticks < 0 ? UINT64{0} - static_cast<UINT64>(ticks) : static_cast<UINT64>(ticks);
    if (distance > kMaxNs / m_scaleNs) {
        return {};
    }
    const auto ns = static_cast<INT64>(distance * m_scaleNs);
    return ticks < 0 ? -ns : ns;
}

// Downwards, below zero too: frames keep their distances.
REFERENCE_TIME FrameTimes::RefTimeOf(INT64 ns) {
    const INT64 quotient = ns / kNsPerReferenceTime;
    return ns % kNsPerReferenceTime < 0 ? quotient - 1 : quotient;
}

} // namespace matroska
