#include "records/track_settings_table.h"

#include <utility>

namespace records {

namespace {

constexpr INT32 kDefaultRows = 100;

} // namespace

CTrackSettingsTable::CTrackSettingsTable() {
    m_rows.reserve(kDefaultRows);
    for (INT32 index = 0; index < kDefaultRows; ++index) {
        m_rows.emplace_back(index);
    }
}

bool CTrackSettingsTable::Has(INT32 index) const {
    const win::LockGuard lock(m_lock);
    return IsInside(index);
}

std::optional<CTrackSettingsRow> CTrackSettingsTable::At(INT32 index) const {
    const win::LockGuard lock(m_lock);
    if (!IsInside(index)) {
        return std::nullopt;
    }
    return m_rows[static_cast<size_t>(index)];
}

std::vector<CTrackSettingsRow> CTrackSettingsTable::All() const {
    const win::LockGuard lock(m_lock);
    return m_rows;
}

CTrackSettingsTable::Replaced CTrackSettingsTable::Replace(INT32 index, CTrackSettingsRow row) {
    const win::LockGuard lock(m_lock);
    if (!IsInside(index)) {
        return Replaced::OutsideTheTable;
    }
    CTrackSettingsRow& current = m_rows[static_cast<size_t>(index)];
    const bool same = current == row;
    current = std::move(row);
    return same ? Replaced::SameAsBefore : Replaced::Changed;
}

void CTrackSettingsTable::Clear() {
    const win::LockGuard lock(m_lock);
    m_rows.clear();
}

void CTrackSettingsTable::Append(CTrackSettingsRow row) {
    const win::LockGuard lock(m_lock);
    m_rows.push_back(std::move(row));
}

bool CTrackSettingsTable::IsEnabled(INT32 index) const {
    const win::LockGuard lock(m_lock);
    return !IsInside(index) || m_rows[static_cast<size_t>(index)].Get().bEnabled != 0;
}

} // namespace records
