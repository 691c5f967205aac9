#include "records/file_options.h"

#include <tuple>
#include <utility>

namespace records {

namespace {

auto ValuesOf(const MuxTrackFlags& flags) {
    return std::tuple(flags.forced, flags.hearingImpaired, flags.visualImpaired, flags.original, flags.commentary);
}

} // namespace

MuxTrackFlags UnsetTrackFlags(INT32 index) {
    return {index, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset};
}

FileOptions CFileOptions::Get() const {
    const win::LockGuard lock(m_lock);
    return m_options;
}

bool CFileOptions::Set(FileOptions options) {
    const win::LockGuard lock(m_lock);
    const bool changed = !(m_options == options);
    m_options = std::move(options);
    return changed;
}

MuxTrackFlags CFileOptions::FlagsOf(INT32 index) const {
    const win::LockGuard lock(m_lock);
    const auto found = m_flags.find(index);
    return found == m_flags.end() ? UnsetTrackFlags(index) : found->second;
}

bool CFileOptions::SetFlags(const MuxTrackFlags& flags) {
    const win::LockGuard lock(m_lock);
    const auto found = m_flags.find(flags.index);
    const MuxTrackFlags unset = UnsetTrackFlags(flags.index);
    const MuxTrackFlags before = found == m_flags.end() ? unset : found->second;
    if (ValuesOf(before) == ValuesOf(flags)) {
        return false;
    }
    if (ValuesOf(flags) == ValuesOf(unset)) {
        m_flags.erase(found);
    } else {
        m_flags[flags.index] = flags;
    }
    return true;
}

} // namespace records
