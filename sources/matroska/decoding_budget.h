// DecodingBudget: how much the compressed frames of a file may become, all together.
//
// Units: bytes. A single frame is held to ContentDecoder::kMaxRatio; this bounds what many of them cost: a small file
// fills neither the memory nor the disk. Tracks of subtitles become two to four times as large; pictures that are
// stored without another codec may become a hundred times as large for as long as they like.
#pragma once

#include <algorithm>

#include "sources/base/limits.h"
#include "sources/matroska/content_decoder.h"

namespace matroska {

class DecodingBudget {
  public:
    static constexpr size_t kMaxBlockBytes = 64 * source::kMiB;
    static constexpr UINT64 kCredit = 64 * source::kMiB;
    static constexpr UINT64 kMaxOverallRatio = 100;

    void Reset() { *this = {}; }
    // What the frames of a block of so many bytes may become together. growth: how many times as large they may become
    // once more behind their decompression.
    [[nodiscard]] size_t RoomFor(size_t stored, size_t growth) const {
        const UINT64 allowed = kCredit + kMaxOverallRatio * (m_stored + stored);
        const UINT64 left = allowed > m_decoded ? allowed - m_decoded : 0;
        return static_cast<size_t>(
            std::min<UINT64>({left, kMaxBlockBytes, UINT64{ContentDecoder::kMaxRatio} * stored * growth}));
    }
    // What they became, whether it was of any use or not.
    void Spend(size_t stored, size_t decoded) {
        m_stored += stored;
        m_decoded += decoded;
    }

  private:
    UINT64 m_stored = 0;
    UINT64 m_decoded = 0;
};

} // namespace matroska
