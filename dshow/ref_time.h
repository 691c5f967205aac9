// Reference times: DirectShow's unit of time, and CRefTime, which the published signatures pass it in.
//
// The time bases side by side: reference times (100 ns, signed; media samples and packets), ns (unsigned; what the file
// and the codecs state), ms (the system's waits and the log). Converters are named after both ends.
#pragma once

#include <cstdint>
#include <limits>

#include "win/platform.h"

inline constexpr REFERENCE_TIME kNsPerReferenceTime = 100;
inline constexpr REFERENCE_TIME kReferenceTimesPerMs = 10000;
inline constexpr REFERENCE_TIME kReferenceTimesPerSecond = 10000000;
inline constexpr REFERENCE_TIME kMaxReferenceTime = std::numeric_limits<REFERENCE_TIME>::max();

// Rounded towards zero.
[[nodiscard]] constexpr REFERENCE_TIME ReferenceTimeFromNs(std::int64_t ns) {
    return ns / kNsPerReferenceTime;
}
// As a file counts time: 0 for what lies before it, at most what 63 bits hold.
[[nodiscard]] constexpr std::uint64_t NsFromReferenceTime(REFERENCE_TIME time) {
    constexpr REFERENCE_TIME kLast = kMaxReferenceTime / kNsPerReferenceTime;
    const REFERENCE_TIME counted = time < 0 ? 0 : time > kLast ? kLast : time;
    return static_cast<std::uint64_t>(counted) * std::uint64_t{kNsPerReferenceTime};
}
[[nodiscard]] constexpr std::int64_t MsFromReferenceTime(REFERENCE_TIME time) {
    return time / kReferenceTimesPerMs;
}

// The sum, or the greatest time there is.
[[nodiscard]] constexpr REFERENCE_TIME AddSaturated(REFERENCE_TIME time, std::uint64_t offset) {
    const std::uint64_t room = static_cast<std::uint64_t>(kMaxReferenceTime) - static_cast<std::uint64_t>(time);
    return offset > room ? kMaxReferenceTime : static_cast<REFERENCE_TIME>(static_cast<std::uint64_t>(time) + offset);
}

class CRefTime {
  public:
    CRefTime() = default;
    CRefTime(REFERENCE_TIME time) : m_time(time) {}
    operator REFERENCE_TIME() const { return m_time; }

    REFERENCE_TIME GetUnits() const { return m_time; }
    LONG Millisecs() const { return static_cast<LONG>(MsFromReferenceTime(m_time)); }

    REFERENCE_TIME m_time = 0;
};
