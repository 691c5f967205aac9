#include "codecs/zero_pair_search.h"

#include <vector>

#include <gtest/gtest.h>

#include "codecs/nal_unit.h"

namespace codecs {
namespace {

// Byte by byte.
size_t FindZerosSlowly(ByteView bytes, size_t from) {
    for (size_t i = from; i < bytes.size(); ++i) {
        if (bytes[i] == 0 && (i + 1 == bytes.size() || bytes[i + 1] == 0)) {
            return i;
        }
    }
    return bytes.size();
}

// Few values, so that zeros stand alone, in pairs and at every place of a word.
std::vector<uint8_t> BytesOf(size_t count, uint32_t seed, uint32_t values) {
    std::vector<uint8_t> bytes(count);
    for (uint8_t& byte : bytes) {
        seed = seed * 1664525 + 1013904223;
        const uint32_t value = seed >> 16 & 0xff;
        byte = static_cast<uint8_t>(value < values ? value : 0x80 + (value & 0x7f));
    }
    return bytes;
}

TEST(ZeroPairSearch, FindsTheSameZerosAsALookAtEveryByte) {
    for (uint32_t seed = 0; seed < 300; ++seed) {
        const std::vector<uint8_t> bytes = BytesOf(seed % 97, seed, seed % 5 == 0 ? 40 : 4);
        for (size_t from = 0; from <= bytes.size(); ++from) {
            ASSERT_EQ(FindZeros(bytes, from), FindZerosSlowly(bytes, from)) << "seed " << seed << " from " << from;
        }
    }
}

TEST(ZeroPairSearch, FindsAPairAtEveryPlaceAndALoneZeroOnlyAtTheEnd) {
    for (size_t size = 1; size < 70; ++size) {
        for (size_t place = 0; place < size; ++place) {
            std::vector<uint8_t> bytes(size, 1);
            bytes[place] = 0;
            EXPECT_EQ(FindZeros(bytes, 0), place + 1 == size ? place : size);
            if (place + 1 < size) {
                bytes[place + 1] = 0;
                EXPECT_EQ(FindZeros(bytes, 0), place);
            }
        }
    }
    EXPECT_EQ(FindZeros({}, 0), 0u);
}

TEST(ZeroPairSearch, ARawPayloadLosesNothingButItsEmulationPrevention) {
    const std::vector<uint8_t> unit{0x65, 1, 0, 0, 3, 1, 0, 3, 0, 0, 0, 3, 3, 0, 0, 3, 0, 0, 3, 9};
    const std::vector<uint8_t> raw{1, 0, 0, 1, 0, 3, 0, 0, 0, 3, 0, 0, 0, 0, 9};
    EXPECT_EQ(RawPayload(unit, 1), raw);
    for (uint32_t seed = 0; seed < 200; ++seed) {
        const std::vector<uint8_t> bytes = BytesOf(150, seed, 5);
        std::vector<uint8_t> expected;
        unsigned zeros = 0;
        for (size_t i = 2; i < bytes.size(); ++i) {
            const bool isPrevention = zeros >= 2 && bytes[i] == 3;
            if (!isPrevention) {
                expected.push_back(bytes[i]);
            }
            zeros = bytes[i] == 0 ? zeros + 1 : 0;
        }
        ASSERT_EQ(RawPayload(bytes, 2), expected) << "seed " << seed;
    }
}

} // namespace
} // namespace codecs
