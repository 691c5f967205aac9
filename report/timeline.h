// Timeline: what a file holds over time, in cells whose number has a bound however long the file is: when it is
// reached, two cells each become one.
//
// Units: ticks of the file; bytes. Threads: one. Errors: std::bad_alloc.
#pragma once

#include <vector>

#include "win/platform.h"

namespace report {

struct Cell {
    UINT64 bytes = 0;
    UINT32 blocks = 0; // in the row of the file: clusters that begin here
    UINT32 keys = 0;   // keyframes; in the row of the file: cue points
    UINT64 lag = 0;    // how far a block stands behind others in the file, at most
};

class Timeline {
  public:
    static constexpr size_t kMostCells = 512;

    // Which has the next number, from 0.
    size_t AddRow();
    // The cell that this time lies in; valid until the next call.
    [[nodiscard]] Cell& At(size_t row, UINT64 ticks);

    [[nodiscard]] UINT64 CellTicks() const { return m_cellTicks; }
    // As many as anything was put into.
    [[nodiscard]] size_t Cells() const { return m_cells; }
    // Of a row; those without anything are zero.
    [[nodiscard]] const std::vector<Cell>& Row(size_t row) const { return m_rows[row]; }

  private:
    void Halve();

    UINT64 m_cellTicks = 1;
    size_t m_cells = 0;
    std::vector<std::vector<Cell>> m_rows; // each of kMostCells
};

} // namespace report
