#include "codecs/avc_picture_order.h"

#include <algorithm>

namespace codecs {

int32_t AvcPictureOrder::Next(const AvcSlice& slice, const AvcSps& sps) {
    CountFrames(slice, sps);
    Order order;
    if (sps.pocType == 0) {
        order = FromLsb(slice, sps);
    } else {
        order = sps.pocType == 1 ? FromCycle(slice, sps) : FromFrameNum(slice);
    }
    if (slice.resetsOrder) { // the picture itself is counted anew, too
        const int64_t least =
            slice.isField ? (slice.isBottom ? order.bottom : order.top) : std::min(order.top, order.bottom);
        order = {order.top - least, order.bottom - least};
    }
    Remember(slice, order);
    if (slice.isField) {
        return static_cast<int32_t>(slice.isBottom ? order.bottom : order.top);
    }
    return static_cast<int32_t>(std::min(order.top, order.bottom));
}

void AvcPictureOrder::CountFrames(const AvcSlice& slice, const AvcSps& sps) {
    if (slice.isIdr || m_wasReset) {
        m_frameNumOffset = 0;
    } else if (m_frameNum > slice.frameNum) {
        m_frameNumOffset += int64_t{1} << sps.frameNumBits;
    }
}

AvcPictureOrder::Order AvcPictureOrder::FromLsb(const AvcSlice& slice, const AvcSps& sps) {
    if (slice.isIdr) {
        m_msb = 0;
        m_lsb = 0;
    }
    const int64_t range = int64_t{1} << sps.pocLsbBits;
    const auto lsb = static_cast<int64_t>(slice.pocLsb);
    m_nextMsb = m_msb;
    if (lsb < m_lsb && m_lsb - lsb >= range / 2) {
        m_nextMsb += range;
    } else if (lsb > m_lsb && lsb - m_lsb > range / 2) {
        m_nextMsb -= range;
    }
    return {m_nextMsb + lsb, m_nextMsb + lsb + slice.deltaPocBottom};
}

// Unsigned numbers wrap where a damaged stream leaves the 32 bits that an order fits.
AvcPictureOrder::Order AvcPictureOrder::FromCycle(const AvcSlice& slice, const AvcSps& sps) const {
    const size_t cycle = sps.offsetsForRefFrame.size();
    uint64_t frames = cycle == 0 ? 0 : static_cast<uint64_t>(m_frameNumOffset) + slice.frameNum;
    if (!slice.isReference && frames > 0) {
        --frames;
    }
    uint64_t expected = 0;
    for (size_t i = 0; i < cycle && frames > 0; ++i) {
        const uint64_t times = (frames - 1) / cycle + (i <= (frames - 1) % cycle ? 1 : 0);
        expected += times * static_cast<uint64_t>(int64_t{sps.offsetsForRefFrame[i]});
    }
    int64_t first = static_cast<int32_t>(static_cast<uint32_t>(expected));
    first += (slice.isReference ? 0 : int64_t{sps.offsetForNonRefPic}) + slice.deltaPoc[0];
    const int64_t bottom = first + sps.offsetForTopToBottomField + (slice.isField ? 0 : slice.deltaPoc[1]);
    return {first, bottom};
}

AvcPictureOrder::Order AvcPictureOrder::FromFrameNum(const AvcSlice& slice) const {
    const int64_t doubled = slice.isIdr ? 0 : 2 * (m_frameNumOffset + slice.frameNum) - (slice.isReference ? 0 : 1);
    return {doubled, doubled};
}

void AvcPictureOrder::Remember(const AvcSlice& slice, const Order& order) {
    m_frameNum = slice.resetsOrder ? 0 : slice.frameNum;
    m_wasReset = slice.resetsOrder;
    if (slice.resetsOrder) {
        m_msb = 0;
        m_lsb = slice.isBottom ? 0 : order.top;
    } else if (slice.isReference) {
        m_msb = m_nextMsb;
        m_lsb = slice.pocLsb;
    }
}

} // namespace codecs
