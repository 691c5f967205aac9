#include "report/timeline.h"

#include <algorithm>

namespace report {

size_t Timeline::AddRow() {
    m_rows.emplace_back(kMostCells);
    return m_rows.size() - 1;
}

Cell& Timeline::At(size_t row, UINT64 ticks) {
    while (ticks / m_cellTicks >= kMostCells) {
        Halve();
    }
    const auto cell = static_cast<size_t>(ticks / m_cellTicks);
    m_cells = std::max(m_cells, cell + 1);
    return m_rows[row][cell];
}

void Timeline::Halve() {
    for (std::vector<Cell>& row : m_rows) {
        for (size_t i = 0; i < kMostCells / 2; ++i) {
            const Cell& first = row[2 * i];
            const Cell& second = row[2 * i + 1];
            row[i] = {first.bytes + second.bytes, first.blocks + second.blocks, first.keys + second.keys,
                      std::max(first.lag, second.lag)};
        }
        std::fill(row.begin() + kMostCells / 2, row.end(), Cell{});
    }
    m_cellTicks *= 2;
    m_cells = (m_cells + 1) / 2;
}

} // namespace report
