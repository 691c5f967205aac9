// CCompatibleInfo: an empty place while the file is recorded, which is filled at the end.
#pragma once

#include <ebml/EbmlVoid.h>
#include <matroska/KaxInfo.h>

#include "mkv/segment_info.h"

namespace mkv {

class CCompatibleInfo final : public CSegmentInfo {
  public:
    // It lies behind the seek head's place, which is as long.
    static constexpr UINT64 kPlaceBytes = 303;

    explicit CCompatibleInfo(CGatheringIO& io) : m_io(io) {}

    void open(bool isWebM, CSeekHead& seekHead) override;
    void openLive(bool isWebM, CSeekHead& seekHead) override;
    void resume(UINT64 tracks, CSeekHead& seekHead) override;
    void setDuration(double durationNs) override;
    void patch(CFilePatcher& patcher, CSeekHead& seekHead) override;

  private:
    void nameApplications();

    CGatheringIO& m_io;
    libebml::EbmlVoid m_place;
    libmatroska::KaxInfo m_element;
};

} // namespace mkv
