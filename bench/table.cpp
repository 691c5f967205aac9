#include "bench/table.h"

#include <algorithm>
#include <cstdio>

namespace bench {

namespace {

constexpr size_t kColumnGap = 2;
constexpr size_t kNumberChars = 64;

void PrintSpaces(size_t count) {
    std::printf("%*s", static_cast<int>(count), "");
}

void PrintCell(const std::string& text, size_t width, bool first) {
    const size_t padding = width - text.size();
    if (!first) {
        PrintSpaces(kColumnGap + padding);
    }
    std::fputs(text.c_str(), stdout);
    if (first) {
        PrintSpaces(padding);
    }
}

} // namespace

std::vector<size_t> Table::ColumnWidths() const {
    std::vector<size_t> widths;
    for (const auto& row : m_rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (size_t i = 0; i < row.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    return widths;
}

void Table::Print() const {
    const auto widths = ColumnWidths();
    for (const auto& row : m_rows) {
        for (size_t i = 0; i < row.size(); ++i) {
            PrintCell(row[i], widths[i], i == 0);
        }
        std::puts("");
    }
    std::fflush(stdout);
}

void PrintHeading(const std::string& text) {
    std::printf("\n== %s ==\n", text.c_str());
    std::fflush(stdout);
}

void PrintNote(const std::string& text) {
    std::printf("  - %s\n", text.c_str());
    std::fflush(stdout);
}

std::string Number(double value, int decimals) {
    char text[kNumberChars];
    std::snprintf(text, sizeof(text), "%.*f", decimals, value);
    return text;
}

std::string Median(const Spread& spread, int decimals) {
    return Number(spread.median, decimals);
}

std::string Range(const Spread& spread, int decimals) {
    return Number(spread.min, decimals) + ".." + Number(spread.max, decimals);
}

} // namespace bench
