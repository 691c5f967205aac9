#include "codecs/nal_unit.h"

#include <algorithm>

namespace codecs {

namespace {

constexpr size_t kMinStartCodeLength = 2;

bool AllZero(ByteView bytes) {
    return std::all_of(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte == 0; });
}

} // namespace

std::vector<uint8_t> RawPayload(ByteView unit, size_t headerBytes) {
    std::vector<uint8_t> payload;
    if (unit.size() < headerBytes) {
        return payload;
    }
    payload.reserve(unit.size());
    unsigned zeros = 0;
    for (const uint8_t byte : unit.subspan(headerBytes)) {
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
    for (size_t last = from + zeros; last < m_buffer.size(); ++last) {
        const auto begin = m_buffer.begin();
        last = static_cast<size_t>(std::find(begin + static_cast<std::ptrdiff_t>(last), m_buffer.end(), uint8_t{1}) -
                                   begin);
        if (last < m_buffer.size() && AllZero(m_buffer.subspan(last - zeros, zeros))) {
            return last - zeros;
        }
    }
    return m_buffer.size();
}

} // namespace codecs
