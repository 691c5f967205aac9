// CTrackSettingsTable: the settings rows of the inputs, 100 of them until a saved configuration brings its own.
//
// Owner: the filter; rows own their strings. Threads: any, one lock. Errors: std::bad_alloc.
#pragma once

#include <optional>
#include <vector>

#include "records/track_settings_row.h"
#include "win/critical_section.h"

namespace records {

class CTrackSettingsTable {
  public:
    CTrackSettingsTable();

    [[nodiscard]] bool Has(INT32 index) const;
    // The row at that position; none outside the table.
    [[nodiscard]] std::optional<CTrackSettingsRow> At(INT32 index) const;
    // A copy of all rows.
    [[nodiscard]] std::vector<CTrackSettingsRow> All() const;
    enum class Replaced { Changed, SameAsBefore, OutsideTheTable };
    [[nodiscard]] Replaced Replace(INT32 index, CTrackSettingsRow row);

    void Clear();
    void Append(CTrackSettingsRow row);

    // Whether the input's stream is written; inputs without a row always are.
    [[nodiscard]] bool IsEnabled(INT32 index) const;

  private:
    [[nodiscard]] bool IsInside(INT32 index) const QRX_REQUIRES(m_lock) {
        return index >= 0 && static_cast<size_t>(index) < m_rows.size();
    }

    mutable win::CriticalSection m_lock;
    std::vector<CTrackSettingsRow> m_rows QRX_GUARDED_BY(m_lock);
};

} // namespace records
