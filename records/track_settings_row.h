// CTrackSettingsRow: a TrackSettings record that owns its strings; copies are deep.
// Owner: itself. Threads: as a value. Errors: std::bad_alloc.
#pragma once

#include <qrx_mkvmuxer.h>

#include "win/bstr.h"

namespace records {

class CTrackSettingsRow {
  public:
    // The defaults of the row for that input: enabled, not default, language "English", no name, type unknown.
    explicit CTrackSettingsRow(INT32 index);
    // A copy; the strings given stay their holder's.
    explicit CTrackSettingsRow(const TrackSettings& settings);
    CTrackSettingsRow(const CTrackSettingsRow& other) : CTrackSettingsRow(other.m_settings) {}
    CTrackSettingsRow(CTrackSettingsRow&& other) noexcept;
    ~CTrackSettingsRow() = default;
    CTrackSettingsRow& operator=(CTrackSettingsRow other) noexcept;

    // The record; its strings live as long as the row.
    [[nodiscard]] const TrackSettings& Get() const { return m_settings; }
    // All fields equal. No string and an empty one differ: both come back as they were given.
    [[nodiscard]] bool operator==(const CTrackSettingsRow& other) const;
    // Replaces the caller's record, whose old strings are freed; the new ones are the caller's.
    void CopyTo(TrackSettings& settings) const;

  private:
    void AdoptStrings() noexcept;

    TrackSettings m_settings;
    win::Bstr m_language; // m_settings points at the strings of these two
    win::Bstr m_name;
};

} // namespace records
