#include "sources/annexb/unit_scanner.h"

#include <algorithm>
#include <span>
#include <utility>

#include "codecs/zero_pair_search.h"

namespace annexb {

namespace {

// Most units lie inside as a whole, so that their heads need not be read again.
constexpr size_t kWindowBytes = size_t{512} * 1024;
constexpr UINT64 kLeastZeros = 2; // of a start code

} // namespace

UnitScanner::UnitScanner(const source::ByteSource& source, UINT64 start, UINT64 end)
    : m_source(&source), m_position(start), m_end(std::min(end, source.Size())) {}

bool UnitScanner::Refill() {
    const UINT64 rest = m_source != nullptr && m_end > m_position ? m_end - m_position : 0;
    m_buffer.resize(static_cast<size_t>(std::min<UINT64>(kWindowBytes, rest)));
    m_next = 0;
    m_window = codecs::ByteView(m_buffer).first(m_buffer.empty() ? 0 : m_source->ReadAt(m_position, m_buffer));
    return !m_window.empty();
}

std::optional<UnitExtent> UnitScanner::Next() {
    while (m_next < m_window.size() || Refill()) {
        if (m_zeros == 0) { // what is no part of a start code is passed over
            const size_t zeros = codecs::FindZeros(m_window, m_next);
            m_position += zeros - std::exchange(m_next, zeros);
            if (m_next == m_window.size()) {
                continue;
            }
        }
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

codecs::ByteView UnitScanner::HeadOf(const UnitExtent& unit, size_t most) {
    const auto count = static_cast<size_t>(std::min<UINT64>(unit.Size(), most));
    const UINT64 windowStart = m_position - m_next;
    if (unit.start >= windowStart && unit.start - windowStart + count <= m_window.size()) {
        return m_window.subspan(static_cast<size_t>(unit.start - windowStart), count);
    }
    m_head.resize(count);
    return codecs::ByteView(m_head).first(m_source != nullptr ? m_source->ReadAt(unit.start, m_head) : 0);
}

} // namespace annexb
