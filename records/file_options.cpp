#include "records/file_options.h"

#include <algorithm>
#include <array>

#include "records/track_colour.h"

namespace records {

namespace {

std::array<BYTE, 5> ValuesOf(const MuxTrackFlags& flags) {
    return {flags.forced, flags.hearingImpaired, flags.visualImpaired, flags.original, flags.commentary};
}

bool IsFlag(BYTE value) {
    return value == MuxFlag_Off || value == MuxFlag_On || value == MuxFlag_Unset;
}

} // namespace

MuxTrackFlags UnsetTrackFlags(INT32 index) {
    return {index, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset, MuxFlag_Unset};
}

bool AreAllUnset(const MuxTrackFlags& flags) {
    return ValuesOf(flags) == ValuesOf(UnsetTrackFlags(flags.index));
}

bool IsProfile(UINT32 value) {
    return value == MuxProfile_Compatible || value == MuxProfile_Strict;
}

bool IsReservedIndex(const MuxReservedIndex& index) {
    return index.bytes <= kMaxIndexBytes && index.expectedLength >= 0;
}

bool IsTitle(WideStringView text) {
    return text.size() <= kMaxTitleLength && text.find(WCHAR{}) == WideStringView::npos;
}

bool AreTrackFlags(const MuxTrackFlags& flags) {
    const auto values = ValuesOf(flags);
    return std::all_of(values.begin(), values.end(), IsFlag);
}

FileOptions CFileOptions::Get() const {
    const win::LockGuard lock(m_lock);
    return m_all.file;
}

MuxTrackFlags CFileOptions::FlagsOf(INT32 index) const {
    const win::LockGuard lock(m_lock);
    const auto found = m_all.flags.find(index);
    return found == m_all.flags.end() ? UnsetTrackFlags(index) : found->second;
}

bool CFileOptions::SetFlags(const MuxTrackFlags& flags) {
    const win::LockGuard lock(m_lock);
    const auto found = m_all.flags.find(flags.index);
    const MuxTrackFlags before = found == m_all.flags.end() ? UnsetTrackFlags(flags.index) : found->second;
    if (ValuesOf(before) == ValuesOf(flags)) {
        return false;
    }
    if (AreAllUnset(flags)) {
        m_all.flags.erase(found);
    } else {
        m_all.flags[flags.index] = flags;
    }
    return true;
}

MuxTrackColour CFileOptions::ColourOf(INT32 index) const {
    const win::LockGuard lock(m_lock);
    const auto found = m_colours.find(index);
    return found == m_colours.end() ? UntoldColour(index) : found->second;
}

void CFileOptions::SetColour(const MuxTrackColour& colour) {
    const win::LockGuard lock(m_lock);
    m_colours[colour.index] = colour;
}

AllOptions CFileOptions::All() const {
    const win::LockGuard lock(m_lock);
    return m_all;
}

void CFileOptions::ReplaceAll(AllOptions all) {
    const win::LockGuard lock(m_lock);
    m_all = std::move(all);
}

} // namespace records
