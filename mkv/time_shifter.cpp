#include "mkv/time_shifter.h"

#include <algorithm>
#include <limits>

namespace {

constexpr INT64 kNsPerRefTimeUnit = 100;
constexpr INT64 kMaxRefTime = std::numeric_limits<INT64>::max() / kNsPerRefTimeUnit;

UINT64 Magnitude(INT64 negative) {
    return UINT64{0} - static_cast<UINT64>(negative);
}

// The sum, or the greatest time there is.
INT64 AddSaturated(INT64 time, UINT64 offset) {
    const UINT64 room = static_cast<UINT64>(std::numeric_limits<INT64>::max()) - static_cast<UINT64>(time);
    return offset > room ? std::numeric_limits<INT64>::max() : static_cast<INT64>(static_cast<UINT64>(time) + offset);
}

UINT64 RefTimeToNs(INT64 time) {
    if (time < 0) {
        return 0;
    }
    return static_cast<UINT64>(time > kMaxRefTime ? kMaxRefTime : time) * UINT64{kNsPerRefTimeUnit};
}

} // namespace

BlockTimes CTimeShifter::toBlockTimes(UINT32 track, INT64 start, INT64 stop) {
    const UINT64 offset = m_offsets.try_emplace(track, start < 0 ? Magnitude(start) : 0).first->second;
    start = AddSaturated(start, offset);
    stop = AddSaturated(stop, offset);
    if (start < 0) {
        stop = AddSaturated(stop, Magnitude(start));
        start = 0;
    }
    BlockTimes times;
    times.timeNs = RefTimeToNs(start);
    times.endNs = std::max(times.timeNs, RefTimeToNs(stop));
    times.durationNs = times.endNs - times.timeNs;
    return times;
}
