#include "sources/base/buffered_source.h"

#include <random>

#include <gtest/gtest.h>

#include "tests/sources/base/memory_source.h"

namespace source {
namespace {

using test_source::MemorySource;

std::vector<BYTE> Pattern(size_t size) {
    std::vector<BYTE> bytes(size);
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<BYTE>(i * 7 + i / 256);
    }
    return bytes;
}

TEST(BufferedSource, ReadsTheSameBytesAsTheSourceBehindItWhereverAsked) {
    const std::vector<BYTE> bytes = Pattern(300'000);
    const BufferedSource source(std::make_unique<MemorySource>(bytes));
    EXPECT_EQ(source.Size(), bytes.size());
    std::mt19937 random(5);
    for (int round = 0; round < 5000; ++round) {
        const size_t offset = random() % (bytes.size() + 10);
        std::vector<BYTE> buffer(random() % 3 == 0 ? random() % 100'000 : random() % 20);
        const size_t expected = offset >= bytes.size() ? 0 : std::min(buffer.size(), bytes.size() - offset);
        ASSERT_EQ(source.ReadAt(offset, buffer), expected);
        for (size_t i = 0; i < expected; ++i) {
            ASSERT_EQ(buffer[i], bytes[offset + i]);
        }
    }
}

TEST(BufferedSource, GivesNothingBehindTheEnd) {
    const BufferedSource source(std::make_unique<MemorySource>("abc"));
    std::vector<BYTE> buffer(2);
    EXPECT_EQ(source.ReadAt(2, buffer), 1u);
    EXPECT_EQ(source.ReadAt(3, buffer), 0u);
    EXPECT_EQ(source.ReadAt(UINT64_MAX, buffer), 0u);
}

} // namespace
} // namespace source
