// AvcPictureOrder: derives the picture order count of each picture in turn (ITU-T H.264, 8.2.1).
//
// Owner: the state of the pictures before. Threads: one at a time.
#pragma once

#include "codecs/avc_slice.h"

namespace codecs {

class AvcPictureOrder {
  public:
    // That of a field, or the lesser one of a frame's two.
    [[nodiscard]] int32_t Next(const AvcSlice& slice, const AvcSps& sps);

  private:
    struct Order {
        int64_t top = 0;
        int64_t bottom = 0;
    };

    [[nodiscard]] Order FromLsb(const AvcSlice& slice, const AvcSps& sps);
    [[nodiscard]] Order FromCycle(const AvcSlice& slice, const AvcSps& sps) const;
    [[nodiscard]] Order FromFrameNum(const AvcSlice& slice) const;
    void CountFrames(const AvcSlice& slice, const AvcSps& sps);
    void Remember(const AvcSlice& slice, const Order& order);

    int64_t m_msb = 0; // of the last reference picture
    int64_t m_lsb = 0;
    int64_t m_nextMsb = 0; // of this picture
    int64_t m_frameNumOffset = 0;
    uint32_t m_frameNum = 0;
    bool m_wasReset = false; // the picture before was the last of its numbering
};

} // namespace codecs
