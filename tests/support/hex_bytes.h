// Bytes written as hexadecimal digits, so that a failed comparison can be read.
#pragma once

#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace mkv_test {

using Bytes = std::vector<uint8_t>;

// Lower-case digits without blanks.
inline std::string ToHex(std::span<const uint8_t> bytes) {
    std::string text;
    for (const uint8_t byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof(digits), "%02x", static_cast<unsigned>(byte));
        text += digits;
    }
    return text;
}

// Blanks between the digits do not count.
inline Bytes FromHex(std::string_view text) {
    const auto digit = [](char c) { return static_cast<unsigned>(c <= '9' ? c - '0' : c - 'a' + 10); };
    Bytes bytes;
    std::string digits;
    for (const char c : text) {
        if (c != ' ') {
            digits += c;
        }
    }
    for (size_t i = 0; i + 1 < digits.size(); i += 2) {
        bytes.push_back(static_cast<uint8_t>(digit(digits[i]) << 4 | digit(digits[i + 1])));
    }
    return bytes;
}

inline Bytes Concat(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

// The units as an Annex B byte stream with four-byte start codes.
inline Bytes ByteStream(const std::vector<Bytes>& units) {
    Bytes stream;
    for (const Bytes& unit : units) {
        stream.insert(stream.end(), {0, 0, 0, 1});
        stream.insert(stream.end(), unit.begin(), unit.end());
    }
    return stream;
}

// The units, each behind its length in two bytes.
inline Bytes LengthPrefixed(const std::vector<Bytes>& units) {
    Bytes stream;
    for (const Bytes& unit : units) {
        stream.push_back(static_cast<uint8_t>(unit.size() >> 8));
        stream.push_back(static_cast<uint8_t>(unit.size()));
        stream.insert(stream.end(), unit.begin(), unit.end());
    }
    return stream;
}

} // namespace mkv_test
