#include "sources/annexb/unit_scanner.h"

#include <algorithm>
#include <span>
#include <utility>

namespace annexb {

namespace {

constexpr size_t kWindowBytes = size_t{64} * 1024;
constexpr UINT64 kLeastZeros = 2; // of a start code

} // namespace

UnitScanner::UnitScanner(const source::ByteSource& source, UINT64 start, UINT64 end)
    : m_source(source), m_position(start), m_end(std::min(end, source.Size())), m_window(kWindowBytes) {}

bool UnitScanner::Refill() {
    const UINT64 rest = m_end > m_position ? m_end - m_position : 0;
    const size_t wanted = static_cast<size_t>(std::min<UINT64>(m_window.size(), rest));
    m_next = 0;
    m_held = wanted == 0 ? 0 : m_source.ReadAt(m_position, std::span(m_window).first(wanted));
    return m_held > 0;
}

std::optional<UnitExtent> UnitScanner::Next() {
    while (m_next < m_held || Refill()) {
        const BYTE byte = m_window[m_next++];
        const UINT64 at = m_position++;
        if (byte == 0) {
            ++m_zeros;
            continue;
        }
        const bool isStartCode = byte == 1 && m_zeros >= kLeastZeros;
        const UINT64 end = at - m_zeros;
        m_zeros = 0;
        if (!isStartCode) {
            continue;
        }
        const std::optional<UINT64> start = std::exchange(m_unitStart, at + 1);
        if (start && end > *start) {
            return UnitExtent{*start, end};
        }
    }
    const std::optional<UINT64> start = std::exchange(m_unitStart, std::nullopt);
    const UINT64 end = m_position - m_zeros;
    return start && end > *start ? std::optional(UnitExtent{*start, end}) : std::nullopt;
}

} // namespace annexb
