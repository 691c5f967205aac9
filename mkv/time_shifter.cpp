#include "mkv/time_shifter.h"

#include <algorithm>

#include "dshow/ref_time.h"

namespace mkv {

namespace {

UINT64 Magnitude(REFERENCE_TIME negative) {
    return UINT64{0} - static_cast<UINT64>(negative);
}

} // namespace

BlockTimes CTimeShifter::toBlockTimes(UINT32 track, REFERENCE_TIME start, REFERENCE_TIME stop) {
    const UINT64 offset = fixOffset(track, start);
    start = AddSaturated(start, offset);
    stop = AddSaturated(stop, offset);
    if (start < 0) {
        stop = AddSaturated(stop, Magnitude(start));
        start = 0;
    }
    BlockTimes times;
    times.timeNs = NsFromReferenceTime(start);
    times.endNs = std::max(times.timeNs, NsFromReferenceTime(stop));
    times.durationNs = times.endNs - times.timeNs;
    return times;
}

UINT64 CTimeShifter::offsetOf(UINT32 track) const {
    return track < m_offsets.size() ? m_offsets[track].value_or(0) : 0;
}

UINT64 CTimeShifter::fixOffset(UINT32 track, REFERENCE_TIME start) {
    if (track >= m_offsets.size()) {
        m_offsets.resize(size_t{track} + 1);
    }
    std::optional<UINT64>& offset = m_offsets[track];
    if (!offset) {
        offset = start < 0 ? Magnitude(start) : 0;
    }
    return *offset;
}

} // namespace mkv
