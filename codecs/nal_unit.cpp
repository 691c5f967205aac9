#include "codecs/nal_unit.h"

#include <algorithm>
#include <bit>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "codecs/zero_pair_search.h"

namespace codecs {

namespace {

constexpr size_t kMinStartCodeLength = 2;

bool AllZero(ByteView bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0; });
}

#ifdef __SSE2__

constexpr size_t kPlacesAtOnce = sizeof(__m128i);

__m128i EqualTo(const uint8_t* bytes, uint8_t value) {
    return _mm_cmpeq_epi8(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)),
                          _mm_set1_epi8(static_cast<char>(value)));
}

// Of the places from there on, all bits of those that hold a 0, and a 1 behind so many zeros.
__m128i Candidates(const uint8_t* place, size_t zeros) {
    return _mm_and_si128(EqualTo(place, 0), EqualTo(place + zeros, 1));
}

// Goes on from place to place while whole runs of them are left, and stops at the first one that has a candidate.
size_t SkipToCandidate(ByteView bytes, size_t from, size_t zeros) {
    constexpr size_t kRuns = 4;
    for (; bytes.size() - from >= kRuns * kPlacesAtOnce + zeros; from += kRuns * kPlacesAtOnce) {
        const uint8_t* const place = bytes.data() + from;
        const __m128i first = _mm_or_si128(Candidates(place, zeros), Candidates(place + kPlacesAtOnce, zeros));
        const __m128i second =
            _mm_or_si128(Candidates(place + 2 * kPlacesAtOnce, zeros), Candidates(place + 3 * kPlacesAtOnce, zeros));
        if (_mm_movemask_epi8(_mm_or_si128(first, second)) != 0) {
            break;
        }
    }
    for (; bytes.size() - from >= kPlacesAtOnce + zeros; from += kPlacesAtOnce) {
        const auto candidates = static_cast<unsigned>(_mm_movemask_epi8(Candidates(bytes.data() + from, zeros)));
        if (candidates != 0) {
            return from + static_cast<size_t>(std::countr_zero(candidates));
        }
    }
    return from;
}

#else

size_t SkipToCandidate(ByteView, size_t from, size_t) {
    return from;
}

#endif

} // namespace

std::vector<uint8_t> RawPayload(ByteView unit, size_t headerBytes) {
    std::vector<uint8_t> payload;
    if (unit.size() < headerBytes) {
        return payload;
    }
    payload.reserve(unit.size());
    const ByteView rest = unit.subspan(headerBytes);
    unsigned zeros = 0;
    for (size_t i = 0; i < rest.size(); ++i) {
        if (zeros == 0) {
            const size_t next = FindZeros(rest, i);
            payload.insert(payload.end(), rest.data() + i, rest.data() + next);
            i = next;
            if (i == rest.size()) {
                break;
            }
        }
        const uint8_t byte = rest[i];
        if (zeros >= 2 && byte == 3) {
            zeros = 0;
            continue;
        }
        zeros = byte == 0 ? zeros + 1 : 0;
        payload.push_back(byte);
    }
    return payload;
}

uint8_t NALUnit::HevcLayerId() const {
    return Length() < kHevcHeaderBytes ? uint8_t{0} : static_cast<uint8_t>((m_payload[0] & 1) << 5 | m_payload[1] >> 3);
}

uint8_t NALUnit::HevcTemporalId() const {
    return Length() < kHevcHeaderBytes ? uint8_t{0} : static_cast<uint8_t>((m_payload[1] & 7) - 1);
}

NALUnitScanner::NALUnitScanner(ByteView buffer, size_t startCodeLength)
    : m_buffer(buffer), m_startCodeLength(std::max(startCodeLength, kMinStartCodeLength)) {
    const size_t firstStartCode = FindStartCode(0);
    if (firstStartCode < m_buffer.size() && AllZero(m_buffer.first(firstStartCode))) {
        m_unitStart = firstStartCode + m_startCodeLength;
    }
}

std::optional<NALUnit> NALUnitScanner::Next() {
    while (m_unitStart < m_buffer.size()) {
        const size_t start = m_unitStart;
        const size_t end = FindStartCode(start);
        m_unitStart = end == m_buffer.size() ? end : end + m_startCodeLength;
        if (end > start) {
            return NALUnit(m_buffer.subspan(start, end - start));
        }
    }
    return std::nullopt;
}

size_t NALUnitScanner::FindStartCode(size_t from) const {
    const size_t zeros = m_startCodeLength - 1;
    for (; m_buffer.size() - from > zeros; ++from) {
        from = SkipToCandidate(m_buffer, from, zeros);
        if (m_buffer.size() - from > zeros && m_buffer[from + zeros] == 1 && AllZero(m_buffer.subspan(from, zeros))) {
            return from;
        }
    }
    return m_buffer.size();
}

} // namespace codecs
