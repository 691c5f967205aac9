// FileOptions: what the application asks of the files to come, beside rows, document type and attachments.
// CFileOptions: the same with a lock, together with the flags of the tracks.
//
// Owner: the filter; values are copied in and out. Threads: CFileOptions any, one lock. Errors: std::bad_alloc.
#pragma once

#include <map>
#include <string>

#include <qrx_mkvmuxer.h>

#include "win/critical_section.h"

namespace records {

struct FileOptions {
    MuxProfile profile = MuxProfile_Compatible;
    std::wstring title;
    UINT64 seed = 0; // 0: none
    bool trackStatistics = true;

    [[nodiscard]] bool isStrict() const { return profile == MuxProfile_Strict; }
    bool operator==(const FileOptions&) const = default;
};

// All unset.
[[nodiscard]] MuxTrackFlags UnsetTrackFlags(INT32 index);

class CFileOptions {
  public:
    [[nodiscard]] FileOptions Get() const;
    // Whether anything changed.
    [[nodiscard]] bool Set(FileOptions options);
    [[nodiscard]] MuxTrackFlags FlagsOf(INT32 index) const;
    // Whether anything changed.
    [[nodiscard]] bool SetFlags(const MuxTrackFlags& flags);

  private:
    mutable win::CriticalSection m_lock;
    FileOptions m_options QRX_GUARDED_BY(m_lock);
    std::map<INT32, MuxTrackFlags> m_flags QRX_GUARDED_BY(m_lock); // by input; those that are not all unset
};

} // namespace records
