// CSegmentInfo: the Info element of the file, in its place in front of the tracks, from the file's first byte to its
// last. Each profile has its own.
// Units: nanoseconds, bytes from the output's start. Owner: the file being written; the output is not owned.
// Threads: the writer's. Errors: what the output throws, std::bad_alloc.
#pragma once

#include <memory>

#include "mkv/file_origin.h"
#include "mkv/file_patcher.h"
#include "mkv/gathering_io.h"
#include "mkv/identifiers.h"
#include "mkv/seek_head.h"
#include "records/file_options.h"

namespace mkv {

// As the applications that read a compatible file see it; not asked of the library.
inline constexpr const char* kMuxingAppText = "libmatroska 1.4.1";

class CSegmentInfo {
  public:
    [[nodiscard]] static std::unique_ptr<CSegmentInfo> of(const records::FileOptions& options, const FileOrigin& origin,
                                                          CGatheringIO& io, CIdentifiers& identifiers);

    virtual ~CSegmentInfo() = default;

    // Writes what stands there while the file is recorded.
    virtual void open(bool isWebM, CSeekHead& seekHead) = 0;
    // Instead of that, where nothing can be patched: all but the duration, which nobody knows yet.
    virtual void openLive(bool isWebM, CSeekHead& seekHead) = 0;
    // Instead of that, it was written there before, and the tracks begin behind it; renders what must be discarded.
    virtual void resume(UINT64 tracks, CSeekHead& seekHead) = 0;
    // What patch is to write.
    virtual void setDuration(double durationNs) = 0;
    virtual void patch(CFilePatcher& patcher, CSeekHead& seekHead) = 0;

  protected:
    CSegmentInfo() = default;
    CSegmentInfo(const CSegmentInfo&) = delete;
    CSegmentInfo& operator=(const CSegmentInfo&) = delete;
};

} // namespace mkv
