#include "codecs/hevc_picture_order.h"

#include "codecs/nal_unit.h"

namespace codecs {

namespace {

// Others are never counted from leading pictures nor from those that their own sub-layer does not refer to.
bool IsCountedFrom(const HevcSlice& slice) {
    const bool isLeading = slice.type >= kHevcFirstRadl && slice.type <= kHevcLastRasl;
    const bool isUnreferenced = slice.type < kHevcLastSubLayerPicture && slice.type % 2 == 0;
    return slice.temporalId == 0 && !isLeading && !isUnreferenced;
}

} // namespace

int32_t HevcPictureOrder::Next(const HevcSlice& slice) {
    const bool beginsSequence = slice.IsIrap() && (m_beginsSequence || slice.type <= kHevcLastIdr);
    m_beginsSequence = m_beginsSequence && !beginsSequence;
    const int64_t range = int64_t{1} << slice.pocLsbBits;
    const auto lsb = static_cast<int64_t>(slice.pocLsb);
    int64_t order = lsb;
    if (beginsSequence) {
        ++m_sequence;
    } else {
        const int64_t lastLsb = m_lastOrder & (range - 1);
        order += m_lastOrder - lastLsb;
        if (lsb < lastLsb && lastLsb - lsb >= range / 2) {
            order += range;
        } else if (lsb > lastLsb && lsb - lastLsb > range / 2) {
            order -= range;
        }
    }
    if (IsCountedFrom(slice)) {
        m_lastOrder = order;
    }
    return static_cast<int32_t>(order);
}

} // namespace codecs
