// CStrictInfo: stands in the file from the start, whole but for the duration, whose room is a Void inside, at its end.
// So a recording that was cut off has its time scale and its names, and what is patched at the end changes no size and
// leaves nothing half-written.
#pragma once

#include <matroska/KaxInfo.h>
#include <matroska/KaxInfoData.h>

#include "mkv/segment_info.h"

namespace mkv {

class CStrictInfo final : public CSegmentInfo {
  public:
    // An identifier of two bytes, a size of one, a number of eight.
    static constexpr UINT64 kDurationBytes = 11;

    CStrictInfo(const records::FileOptions& options, const FileOrigin& origin, CGatheringIO& io,
                CIdentifiers& identifiers)
        : m_options(options), m_origin(origin), m_io(io), m_identifiers(identifiers) {}

    void open(bool isWebM, CSeekHead& seekHead) override;
    void openLive(bool isWebM, CSeekHead& seekHead) override;
    void resume(UINT64 tracks, CSeekHead& seekHead) override;
    void setDuration(double durationNs) override;
    void patch(CFilePatcher& patcher, CSeekHead& seekHead) override;

  private:
    void fill();
    void describe(bool isWebM);
    void render(CSeekHead& seekHead);

    const records::FileOptions& m_options;
    const FileOrigin& m_origin;
    CGatheringIO& m_io;
    CIdentifiers& m_identifiers;
    libmatroska::KaxInfo m_element;
    libmatroska::KaxDuration m_duration;
    bool m_hasDuration = false;
    UINT64 m_durationPlace = 0;
};

} // namespace mkv
