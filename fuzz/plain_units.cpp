#include "fuzz/plain_units.h"

#include <algorithm>

namespace fuzz {

namespace {

bool IsStartCode(codecs::ByteView bytes, size_t at, size_t length) {
    if (bytes.size() - at < length || bytes[at + length - 1] != 1) {
        return false;
    }
    const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    return std::count(begin, begin + static_cast<std::ptrdiff_t>(length) - 1, 0) ==
           static_cast<std::ptrdiff_t>(length) - 1;
}

} // namespace

std::vector<std::vector<std::uint8_t>> PlainUnits(codecs::ByteView stream, size_t startCodeLength) {
    std::vector<std::vector<std::uint8_t>> units(1);
    for (size_t i = 0; i < stream.size();) {
        if (!IsStartCode(stream, i, startCodeLength)) {
            units.back().push_back(stream[i++]);
            continue;
        }
        const auto& front = units.front();
        if (units.size() == 1 &&
            std::count(front.begin(), front.end(), 0) == static_cast<std::ptrdiff_t>(front.size())) {
            units.front().clear(); // leading zero bytes
        }
        units.emplace_back();
        i += startCodeLength;
    }
    std::erase_if(units, [](const auto& unit) { return unit.empty(); });
    return units;
}

std::vector<std::uint8_t> WithLengths(const std::vector<std::vector<std::uint8_t>>& units, size_t lengthBytes) {
    std::vector<std::uint8_t> all;
    for (const auto& unit : units) {
        if (static_cast<std::uint64_t>(unit.size()) >> (8 * lengthBytes) != 0) {
            continue;
        }
        for (size_t i = lengthBytes; i-- > 0;) {
            all.push_back(static_cast<std::uint8_t>(unit.size() >> (8 * i)));
        }
        all.insert(all.end(), unit.begin(), unit.end());
    }
    return all;
}

std::vector<std::uint8_t> ExactCopy(codecs::ByteView bytes) {
    return {bytes.begin(), bytes.end()};
}

} // namespace fuzz
