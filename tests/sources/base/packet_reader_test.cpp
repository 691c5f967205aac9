#include "sources/base/packet_reader.h"

#include <cstdint>

#include <gtest/gtest.h>

namespace source {
namespace {

// Gives packets that no reader should make.
class CarelessReader final : public PacketReader {
  public:
    explicit CarelessReader(std::vector<Packet> packets) : m_packets(std::move(packets)) {}
    const std::vector<StreamDescription>& Streams() const override { return m_streams; }

  private:
    void StartOver() override { m_next = 0; }
    bool ReadNext(Packet& packet) override {
        if (m_next == m_packets.size()) {
            return false;
        }
        packet = m_packets[m_next++];
        return true;
    }

    std::vector<StreamDescription> m_streams;
    std::vector<Packet> m_packets;
    size_t m_next = 0;
};

Packet PacketOf(size_t bytes, REFERENCE_TIME start, REFERENCE_TIME stop) {
    Packet packet;
    packet.data.resize(bytes);
    packet.start = start;
    packet.stop = stop;
    packet.hasStop = true;
    return packet;
}

std::vector<size_t> SizesOf(PacketReader& reader) {
    std::vector<size_t> sizes;
    Packet packet;
    reader.Rewind();
    while (reader.Next(packet)) {
        sizes.push_back(packet.data.size());
    }
    return sizes;
}

TEST(PacketReader, NoReaderGivesAPacketAboveTheCeiling) {
    CarelessReader reader({PacketOf(kMaxPacketBytes + 1, 0, 1), PacketOf(kMaxPacketBytes, 0, 1)});
    EXPECT_EQ(SizesOf(reader), std::vector{kMaxPacketBytes});
    EXPECT_TRUE(FAILED(reader.Damage()));
}

TEST(PacketReader, NoReaderGivesATimeThatCannotBe) {
    CarelessReader reader({PacketOf(1, -1, 1), PacketOf(2, kMaxTime + 1, kMaxTime + 1), PacketOf(3, 0, INT64_MAX),
                           PacketOf(4, 2, 1), PacketOf(5, kMaxTime, kMaxTime)});
    EXPECT_EQ(SizesOf(reader), std::vector<size_t>{5});
    EXPECT_TRUE(FAILED(reader.Damage()));
}

TEST(PacketReader, DamageIsThatOfTheRun) {
    CarelessReader reader({PacketOf(1, 0, 1), PacketOf(2, -1, 1)});
    Packet packet;
    EXPECT_TRUE(reader.Next(packet));
    EXPECT_EQ(reader.Damage(), S_OK);
    EXPECT_FALSE(reader.Next(packet));
    EXPECT_TRUE(FAILED(reader.Damage()));
    reader.Rewind();
    EXPECT_EQ(reader.Damage(), S_OK);
}

} // namespace
} // namespace source
