// FileOptions: what the application asks of the files to come, beside rows, document type and attachments.
// AllOptions: the same with the flags of the tracks, chapters and tags, as they are saved. CFileOptions: what of them
// is no list, with a lock.
//
// Owner: the filter; values are copied in and out. Threads: CFileOptions any, one lock. Errors: std::bad_alloc.
#pragma once

#include <map>
#include <utility>
#include <vector>

#include <qrx_mkvmuxer.h>

#include "records/chapter.h"
#include "records/tag.h"
#include "win/critical_section.h"
#include "win/wide_string.h"

namespace records {

constexpr size_t kMaxTitleLength = 32767; // UTF-16 code units

constexpr UINT64 kMaxIndexBytes = UINT64{16} << 20;

struct FileOptions {
    MuxProfile profile = MuxProfile_Compatible;
    WideString title;
    UINT64 seed = 0; // 0: none
    bool trackStatistics = true;
    // What is kept for the index: so many bytes, or what a recording of that length needs; 0 and 0: nothing.
    UINT64 indexBytes = 0;
    REFERENCE_TIME indexLength = 0;

    [[nodiscard]] bool isStrict() const { return profile == MuxProfile_Strict; }
    bool operator==(const FileOptions&) const = default;
};

struct AllOptions {
    FileOptions file;
    std::map<INT32, MuxTrackFlags> flags; // by input; those that are not all unset
    std::vector<Chapter> chapters;
    std::vector<Tag> tags;

    [[nodiscard]] bool IsDefault() const {
        return flags.empty() && chapters.empty() && tags.empty() && file == FileOptions();
    }
};

// All unset.
[[nodiscard]] MuxTrackFlags UnsetTrackFlags(INT32 index);
[[nodiscard]] bool AreAllUnset(const MuxTrackFlags& flags);

// What may be set. A title ends where a null character stands in it; one that has any is none.
[[nodiscard]] bool IsProfile(UINT32 value);
[[nodiscard]] bool IsReservedIndex(const MuxReservedIndex& index);
[[nodiscard]] bool IsTitle(WideStringView text);
[[nodiscard]] bool AreTrackFlags(const MuxTrackFlags& flags);

class CFileOptions {
  public:
    [[nodiscard]] FileOptions Get() const;
    // Whether the edit, which is called with the options and the lock, changed any.
    template <typename Edit>
    bool Change(Edit edit) {
        const win::LockGuard lock(m_lock);
        FileOptions changed = m_all.file;
        edit(changed);
        const bool isChange = !(changed == m_all.file);
        m_all.file = std::move(changed);
        return isChange;
    }
    [[nodiscard]] MuxTrackFlags FlagsOf(INT32 index) const;
    // Whether anything changed.
    bool SetFlags(const MuxTrackFlags& flags);

    // What is told of an input's colours: kept beside the options, since it is of one stream and never saved.
    [[nodiscard]] MuxTrackColour ColourOf(INT32 index) const;
    void SetColour(const MuxTrackColour& colour);

    [[nodiscard]] AllOptions All() const;
    void ReplaceAll(AllOptions all);

  private:
    mutable win::CriticalSection m_lock;
    AllOptions m_all QRX_GUARDED_BY(m_lock);
    std::map<INT32, MuxTrackColour> m_colours QRX_GUARDED_BY(m_lock); // by input
};

} // namespace records
