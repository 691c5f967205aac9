#include "tests/sources/base/packet_checks.h"

#include <gtest/gtest.h>

namespace test_source {

namespace {

constexpr unsigned kSeed = 20240811;
constexpr REFERENCE_TIME kMaxTime = INT64_MAX / 4;
// Reading ends: no input of these tests comes near.
constexpr int kMaxPackets = 1'000'000;

} // namespace

std::vector<source::Packet> ReadAll(source::PacketReader& reader) {
    std::vector<source::Packet> packets;
    source::Packet packet;
    reader.Rewind();
    while (reader.Next(packet)) {
        packets.push_back(packet);
    }
    return packets;
}

int CheckReading(const MakeReader& make, const Bytes& bytes) {
    const std::unique_ptr<source::PacketReader> reader = make(bytes);
    if (!reader) {
        return -1;
    }
    int count = 0;
    source::Packet packet;
    while (count < kMaxPackets && reader->Next(packet)) {
        ++count;
        EXPECT_LT(packet.stream, reader->Streams().size());
        EXPECT_FALSE(packet.data.empty());
        EXPECT_LE(packet.data.size(), source::kMaxPacketBytes);
        EXPECT_GE(packet.start, 0);
        EXPECT_LT(packet.start, kMaxTime);
        EXPECT_TRUE(!packet.hasStop || (packet.stop >= packet.start && packet.stop < kMaxTime));
    }
    EXPECT_LT(count, kMaxPackets);
    return count;
}

void CheckTruncations(const MakeReader& make, const Bytes& whole, bool tellsItsLength) {
    const int all = CheckReading(make, whole);
    ASSERT_GT(all, 0) << "the whole input must be readable";
    std::mt19937 random(kSeed);
    int readable = 0;
    for (int round = 0; round < kDamagedInputs; ++round) {
        const size_t length = random() % whole.size();
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const int count = CheckReading(make, cut);
        readable += count > 0 ? 1 : 0;
        if (tellsItsLength && count >= 0 && count < all) {
            const auto reader = make(cut);
            (void)ReadAll(*reader);
            EXPECT_TRUE(FAILED(reader->Damage())) << "cut at " << length << " of " << whole.size();
        }
        ASSERT_FALSE(testing::Test::HasFailure()) << "cut at " << length;
    }
    EXPECT_GT(readable, kDamagedInputs / 4) << "what lies before the cut can be read";
}

void CheckBitFlips(const MakeReader& make, const Bytes& whole) {
    std::mt19937 random(kSeed);
    int readable = 0;
    for (int round = 0; round < kDamagedInputs; ++round) {
        Bytes damaged = whole;
        for (auto flips = 1 + random() % 8; flips > 0; --flips) {
            BYTE& byte = damaged[random() % damaged.size()];
            byte = static_cast<BYTE>(byte ^ 1U << random() % 8);
        }
        readable += CheckReading(make, damaged) > 0 ? 1 : 0;
        ASSERT_FALSE(testing::Test::HasFailure()) << "round " << round;
    }
    EXPECT_GT(readable, kDamagedInputs / 4) << "most of the input can still be read";
}

} // namespace test_source
