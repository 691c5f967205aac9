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

// Counts the bytes that are read of it.
class CountedSource final : public ByteSource {
  public:
    CountedSource(std::vector<BYTE> bytes, size_t& count) : m_bytes(std::move(bytes)), m_count(count) {}
    UINT64 Size() const override { return m_bytes.Size(); }
    size_t ReadAt(UINT64 offset, std::span<BYTE> buffer) const override {
        const size_t got = m_bytes.ReadAt(offset, buffer);
        m_count += got;
        return got;
    }

  private:
    MemorySource m_bytes;
    size_t& m_count;
};

TEST(BufferedSource, ReadsEveryByteOnceFromFrontToBackWhateverThePieces) {
    const std::vector<BYTE> bytes = Pattern(700'000);
    size_t count = 0;
    const BufferedSource source(std::make_unique<CountedSource>(bytes, count));
    std::vector<BYTE> all;
    std::mt19937 random(7);
    while (all.size() < bytes.size()) {
        const size_t most[] = {12, 30'000, 150'000};
        std::vector<BYTE> buffer(1 + random() % most[random() % 3]);
        buffer.resize(source.ReadAt(all.size(), buffer));
        all.insert(all.end(), buffer.begin(), buffer.end());
    }
    EXPECT_EQ(all, bytes);
    EXPECT_EQ(count, bytes.size());
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
