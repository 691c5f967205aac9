// CLatePrivateData: the CodecPrivate of tracks whose media types lack it, and whose first keyframes have it. Room is
// left in the track entry, and filled at once when the keyframe comes; a reader can do without what does not fit.
// Units: bytes. Owner: the file being written; the entries outlive this. Threads: the writer's.
// Errors: std::bad_alloc, what the output throws.
#pragma once

#include <map>
#include <span>

#include <matroska/KaxTracks.h>

#include "mkv/file_patcher.h"
#include "mkv/reserved_place.h"
#include "mkv/writer_input.h"

namespace mkv {

class CLatePrivateData {
  public:
    // Behind all that the entry has, and only where the type lacks something; streams count from 0.
    void reserve(libmatroska::KaxTrackEntry& entry, UINT32 stream, const AM_MEDIA_TYPE& type);
    // Once the entries are in the file.
    void fill(UINT32 stream, std::span<const BYTE> keyframe, CFilePatcher& patcher);

  private:
    std::map<UINT32, CReservedPlace> m_places;
};

} // namespace mkv
