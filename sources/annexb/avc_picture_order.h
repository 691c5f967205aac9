// AvcPictureOrder: derives the picture order count of each picture in turn (ITU-T H.264, 8.2.1).
//
// Owner: the state of the pictures before. Threads: one at a time.
#pragma once

#include "sources/annexb/avc_slice.h"

namespace annexb {

class AvcPictureOrder {
  public:
    // That of a field, or the lesser one of a frame's two.
    [[nodiscard]] INT32 Next(const AvcSlice& slice, const AvcSps& sps);

  private:
    struct Order {
        INT64 top = 0;
        INT64 bottom = 0;
    };

    [[nodiscard]] Order FromLsb(const AvcSlice& slice, const AvcSps& sps);
    [[nodiscard]] Order FromCycle(const AvcSlice& slice, const AvcSps& sps) const;
    [[nodiscard]] Order FromFrameNum(const AvcSlice& slice) const;
    void CountFrames(const AvcSlice& slice, const AvcSps& sps);
    void Remember(const AvcSlice& slice, const Order& order);

    INT64 m_msb = 0; // of the last reference picture
    INT64 m_lsb = 0;
    INT64 m_nextMsb = 0; // of this picture
    INT64 m_frameNumOffset = 0;
    UINT32 m_frameNum = 0;
    bool m_wasReset = false; // the picture before was the last of its numbering
};

} // namespace annexb
