#include "records/track_settings_row.h"

#include <utility>

namespace records {

namespace {

constexpr INT32 kUnknownTrackType = -1;

bool AreEqual(BSTR left, BSTR right) {
    const WideStringView leftText(left, SysStringLen(left));
    return (left == nullptr) == (right == nullptr) && leftText == WideStringView(right, SysStringLen(right));
}

} // namespace

CTrackSettingsRow::CTrackSettingsRow(INT32 index)
    : m_settings{index, 1, 0, 0, nullptr, nullptr, kUnknownTrackType}, m_language(WideStringView(OLESTR("English"))),
      m_name(WideStringView(OLESTR(""))) {
    AdoptStrings();
}

CTrackSettingsRow::CTrackSettingsRow(const TrackSettings& settings)
    : m_settings(settings), m_language(win::Bstr::CopyOf(settings.language)), m_name(win::Bstr::CopyOf(settings.name)) {
    AdoptStrings();
}

CTrackSettingsRow::CTrackSettingsRow(CTrackSettingsRow&& other) noexcept
    : m_settings(other.m_settings), m_language(std::move(other.m_language)), m_name(std::move(other.m_name)) {
    other.AdoptStrings();
}

CTrackSettingsRow& CTrackSettingsRow::operator=(CTrackSettingsRow other) noexcept {
    std::swap(m_settings, other.m_settings);
    std::swap(m_language, other.m_language);
    std::swap(m_name, other.m_name);
    return *this;
}

bool CTrackSettingsRow::operator==(const CTrackSettingsRow& other) const {
    const TrackSettings& left = m_settings;
    const TrackSettings& right = other.m_settings;
    return left.index == right.index && left.bEnabled == right.bEnabled && left.bDefault == right.bDefault &&
           left.bReserved == right.bReserved && left.trackType == right.trackType &&
           AreEqual(left.language, right.language) && AreEqual(left.name, right.name);
}

void CTrackSettingsRow::CopyTo(TrackSettings& settings) const {
    win::Bstr language(m_language);
    win::Bstr name(m_name);
    SysFreeString(settings.language);
    SysFreeString(settings.name);
    settings = m_settings;
    settings.language = language.Detach();
    settings.name = name.Detach();
}

void CTrackSettingsRow::AdoptStrings() noexcept {
    m_settings.language = m_language.Get();
    m_settings.name = m_name.Get();
}

} // namespace records
