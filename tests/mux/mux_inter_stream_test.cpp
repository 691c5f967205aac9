#include "mux/mux_inter_stream.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "mux/mux_interleaver.h"
#include "tests/mux/packet_helpers.h"

namespace {

TEST(MuxInterStream, BeginsAsDocumented) {
    CMuxInterStream stream(3);
    EXPECT_EQ(3u, stream.Index());
    EXPECT_FALSE(stream.IsSuspended());
    EXPECT_TRUE(stream.IsInterleaved());
    EXPECT_FALSE(stream.IsActive());
    EXPECT_EQ(2000u, stream.ByteLimit());
    EXPECT_EQ(nullptr, stream.Pin());
    EXPECT_EQ(MuxStreamKind::Other, stream.Kind());
    EXPECT_TRUE(stream.IsEmpty());
    EXPECT_TRUE(stream.IsWritable());
    EXPECT_EQ(0u, stream.QueuedBytes());
    EXPECT_FALSE(stream.SawEndOfStream());
    EXPECT_EQ(S_OK, stream.StreamResult());
}

TEST(MuxInterStream, ByteLimitsByKind) {
    EXPECT_EQ(104857600u, CMuxInterStream::ByteLimitOf(MuxStreamKind::Video));
    EXPECT_EQ(10485760u, CMuxInterStream::ByteLimitOf(MuxStreamKind::Audio));
    EXPECT_EQ(1048576u, CMuxInterStream::ByteLimitOf(MuxStreamKind::Subtitle));
    EXPECT_EQ(2000u, CMuxInterStream::ByteLimitOf(MuxStreamKind::Other));
}

TEST(MuxInterStream, StreamKindsHaveTheirNumbers) {
    EXPECT_EQ(0, static_cast<int>(MuxStreamKind::Video));
    EXPECT_EQ(1, static_cast<int>(MuxStreamKind::Audio));
    EXPECT_EQ(2, static_cast<int>(MuxStreamKind::Subtitle));
    EXPECT_EQ(3, static_cast<int>(MuxStreamKind::Other));
}

TEST(MuxInterStream, AttachMakesItActiveWithItsKindsLimit) {
    CMuxInterStream stream(0);
    stream.Attach(nullptr, MuxStreamKind::Subtitle, false);
    EXPECT_TRUE(stream.IsActive());
    EXPECT_FALSE(stream.IsInterleaved());
    EXPECT_EQ(MuxStreamKind::Subtitle, stream.Kind());
    EXPECT_EQ(1048576u, stream.ByteLimit());
}

// The bytes of packets that are made small on purpose say nothing of the memory that they take.
TEST(MuxInterStream, NeverQueuesMorePacketsThanAnyRealStreamHas) {
    CMuxInterStream stream(0);
    stream.Attach(nullptr, MuxStreamKind::Video, true);
    size_t added = 0;
    for (; stream.HasRoom() && added < CMuxInterStream::kMaxQueuedPackets * 2; ++added) {
        stream.Append(MakePacket(0, 0, 1));
    }
    EXPECT_GE(added, CMuxInterStream::kMaxQueuedPackets);
    EXPECT_LT(added, CMuxInterStream::kMaxQueuedPackets + CMuxInterStream::kMaxQueuedPackets / 100);
    EXPECT_FALSE(stream.IsWritable());
    while (!stream.IsWritable()) {
        ASSERT_NE(nullptr, stream.TakeFront());
    }
    EXPECT_EQ(stream.QueuedPackets(), CMuxInterStream::kMaxQueuedPackets - 1);
    EXPECT_TRUE(stream.HasRoom());
}

TEST(MuxInterStream, IsWritableExactlyWhileBelowItsLimit) {
    CMuxInterStream stream(0);
    stream.Append(MakePacket(0, 0, 1999));
    EXPECT_TRUE(stream.IsWritable());
    stream.Append(MakePacket(0, 1, 1));
    EXPECT_FALSE(stream.IsWritable());
    EXPECT_EQ(2000u, stream.QueuedBytes());
    EXPECT_NE(nullptr, stream.TakeFront());
    EXPECT_TRUE(stream.IsWritable());
    EXPECT_EQ(1u, stream.QueuedBytes());
}

TEST(MuxInterStream, StaysUnwritableWhileTheRestStillReachesTheLimit) {
    CMuxInterStream stream(0);
    stream.Append(MakePacket(0, 0, 10));
    stream.Append(MakePacket(0, 1, 2000));
    EXPECT_NE(nullptr, stream.TakeFront());
    EXPECT_FALSE(stream.IsWritable());
}

TEST(MuxInterStream, NeverHandsOutItsEndOfStreamPacket) {
    CMuxInterStream stream(0);
    stream.Append(MakePacket(0, 5));
    stream.Append(MakeEndOfStream(0));
    EXPECT_TRUE(stream.SawEndOfStream());
    EXPECT_FALSE(stream.HasEnded());
    EXPECT_NE(nullptr, stream.TakeFront());
    EXPECT_TRUE(stream.HasEnded());
    EXPECT_EQ(nullptr, stream.TakeFront());
    EXPECT_EQ(1u, stream.QueuedPackets());
}

TEST(MuxInterStream, ItsNextPacketBringsASuspendedStreamBack) {
    CMuxInterStream stream(0);
    stream.Suspend();
    EXPECT_TRUE(stream.IsSuspended());
    EXPECT_FALSE(stream.IsInterleaved());
    stream.Append(MakePacket(0, 0));
    EXPECT_FALSE(stream.IsSuspended());
    EXPECT_TRUE(stream.IsInterleaved());
}

TEST(MuxInterStream, AStreamThatIsNotInterleavedStaysSoWhenPacketsCome) {
    CMuxInterStream stream(0);
    stream.Attach(nullptr, MuxStreamKind::Video, false);
    stream.Append(MakePacket(0, 0));
    EXPECT_FALSE(stream.IsInterleaved());
}

TEST(MuxInterStream, KeepsTheResultThatTheMuxerRecorded) {
    CMuxInterStream stream(0);
    stream.SetStreamResult(STG_E_MEDIUMFULL);
    EXPECT_EQ(STG_E_MEDIUMFULL, stream.StreamResult());
}

TEST(MuxInterStream, TheSharedClassesHaveVirtualDestructors) {
    EXPECT_TRUE(std::has_virtual_destructor_v<CMuxInterPacket>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CMuxInterStream>);
    EXPECT_TRUE(std::has_virtual_destructor_v<CMuxInterleaver>);
}

TEST(MuxInterPacket, BeginsUnassignedAndEmpty) {
    const CMuxInterPacket packet;
    EXPECT_EQ(0, packet.start);
    EXPECT_EQ(0, packet.stop);
    EXPECT_EQ(nullptr, packet.data);
    EXPECT_EQ(0u, packet.size);
    EXPECT_FALSE(packet.syncPoint);
    EXPECT_FALSE(packet.hasTime);
    EXPECT_EQ(-1, packet.streamIndex);
    EXPECT_FALSE(packet.endOfStream);
    EXPECT_EQ(0, packet.muxerFlag);
}

} // namespace
