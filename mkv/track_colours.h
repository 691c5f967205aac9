// CTrackColours: the Colour elements of a file's tracks. What is told of a track counts first, then its media type,
// then its stream. Where the first picture may tell more, a place is kept that is filled when it comes. Units: bytes.
// Owner: the file being written; the entries outlive this. Threads: the writer's. Errors: std::bad_alloc, what the
// output throws.
#pragma once

#include <map>
#include <span>

#include <matroska/KaxTracks.h>

#include "media/colour.h"
#include "mkv/file_patcher.h"
#include "mkv/reserved_place.h"
#include "mkv/writer_input.h"

namespace mkv {

class CTrackColours {
  public:
    // Behind all that the entry's Video has; streams count from 0. WebM has no Dolby Vision, and
    // in a live file no place can be filled later.
    void add(libmatroska::KaxTrackEntry& entry, UINT32 stream, const Track& track, bool isWebm, bool isLive);
    // Once the entries are in the file.
    void fill(UINT32 stream, std::span<const BYTE> keyframe, CFilePatcher& patcher);

  private:
    // What an element that tells everything may take.
    static constexpr UINT64 kPlaceBytes = 192;

    struct Late {
        Late(const Track& itsTrack, libebml::EbmlMaster& video) : track(itsTrack), place(video, kPlaceBytes) {}

        const Track& track;
        CReservedPlace place;
    };

    std::map<UINT32, Late> m_late;
};

} // namespace mkv
