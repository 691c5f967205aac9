// HevcPictureOrder: derives the picture order count of each picture in turn (ITU-T H.265, 8.3.1).
//
// Owner: the state of the pictures before. Threads: one at a time.
#pragma once

#include "codecs/hevc_slice.h"

namespace codecs {

class HevcPictureOrder {
  public:
    [[nodiscard]] int32_t Next(const HevcSlice& slice);
    // The next random access picture starts the counting anew.
    void EndSequence() { m_beginsSequence = true; }

    // The coded video sequence of the last picture; 0 in front of the first random access picture.
    [[nodiscard]] uint32_t Sequence() const { return m_sequence; }

  private:
    bool m_beginsSequence = true;
    int64_t m_lastOrder = 0; // of the last picture that others are counted from
    uint32_t m_sequence = 0;
};

} // namespace codecs
