// Table: rows of text, printed with aligned columns; the first column to the left, the numbers to the right.
//
// Owner: the section that fills it. Threads: one.
#pragma once

#include <string>
#include <vector>

#include "bench/spread.h"

namespace bench {

class Table {
  public:
    explicit Table(std::vector<std::string> header) : m_rows{std::move(header)} {}

    void AddRow(std::vector<std::string> cells) { m_rows.push_back(std::move(cells)); }
    void Print() const;

  private:
    [[nodiscard]] std::vector<size_t> ColumnWidths() const;

    std::vector<std::vector<std::string>> m_rows; // the header first
};

void PrintHeading(const std::string& text);
// One line below a table: what is expected of it, or how it was made.
void PrintNote(const std::string& text);

[[nodiscard]] std::string Number(double value, int decimals = 0);
[[nodiscard]] std::string Median(const Spread& spread, int decimals = 0);
// "min..max"
[[nodiscard]] std::string Range(const Spread& spread, int decimals = 0);

} // namespace bench
