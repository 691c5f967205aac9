#include "sources/base/source_filter.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "dshow/am_media_type.h"
#include "dshow/base_object.h"
#include "dshow/media_subtypes.h"
#include "dshow/memory_allocator.h"
#include "media/format_builder.h"
#include "sources/base/packet_allocator.h"
#include "tests/sources/base/collecting_filter.h"
#include "tests/sources/base/wary_allocator.h"
#include "tests/support/fake_graph.h"

namespace source {
namespace {

using namespace std::chrono_literals;
using test_source::CollectingFilter;

constexpr GUID kClassId{0x11111111, 0x2222, 0x3333, {1, 2, 3, 4, 5, 6, 7, 8}};

// Packets as the test gives them; the second stream has no media type.
class ScriptedReader final : public PacketReader {
  public:
    explicit ScriptedReader(std::vector<Packet> packets, bool throwsAtEnd = false, HRESULT damage = S_OK)
        : m_packets(std::move(packets)), m_throwsAtEnd(throwsAtEnd), m_damage(damage) {
        m_streams.resize(2);
        m_streams[0].name = OLESTR("First");
        m_streams[0].types = {media::WaveType(mediasubtype::kDolbyAc3, {}, {}),
                              media::WaveType(mediasubtype::kAc3WaveTag, {}, {})};
        m_streams[1].name = OLESTR("Second");
        m_streams[1].problem = "V_ODD: no media type carries this codec";
    }
    const std::vector<StreamDescription>& Streams() const override { return m_streams; }
    void StartOver() override { m_next = 0; }
    bool ReadNext(Packet& packet) override {
        if (m_next == m_packets.size()) {
            if (m_throwsAtEnd) {
                throw std::runtime_error("a reader that breaks its word");
            }
            return false;
        }
        packet = m_packets[m_next++];
        return true;
    }
    HRESULT DamageSoFar() const override { return m_damage; }

  private:
    std::vector<StreamDescription> m_streams;
    std::vector<Packet> m_packets;
    bool m_throwsAtEnd;
    HRESULT m_damage;
    size_t m_next = 0;
};

Packet PacketOf(size_t bytes, REFERENCE_TIME start, size_t stream = 0) {
    Packet packet;
    packet.stream = stream;
    packet.data.assign(bytes, static_cast<BYTE>(bytes));
    packet.start = start;
    packet.stop = start + 10;
    packet.hasStop = true;
    packet.keyframe = true;
    return packet;
}

class SourceFilter : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))); }
    void TearDown() override {
        Close();
        if (m_opened.filter) {
            m_opened.filter->JoinFilterGraph(nullptr, nullptr);
        }
        m_opened = {};
        m_sink.Reset();
        EXPECT_EQ(CBaseObject::ObjectsActive(), 0);
        CoUninitialize();
    }
    // Before an allocator of the test's own goes.
    void Close() {
        if (m_pin) {
            m_sink->Pin().Disconnect();
            m_pin->Disconnect();
            m_pin.Reset();
            m_sink->Pin().OfferAllocator(nullptr);
            m_sink->Pin().ForgetAgreed();
        }
    }
    void Open(std::unique_ptr<PacketReader> reader) {
        ASSERT_EQ(CSourceFilter::Make(std::move(reader), kClassId, m_opened), S_OK);
        m_opened.filter->JoinFilterGraph(&m_graph, OLESTR("source"));
        ASSERT_EQ(m_opened.filter->FindPin(OLESTR("First"), m_pin.Put()), S_OK);
        ASSERT_EQ(m_pin->Connect(&m_sink->Pin(), nullptr), S_OK);
    }
    void Start() {
        m_sink->Pause();
        ASSERT_EQ(m_opened.filter->Pause(), S_OK);
    }
    void Stop() {
        m_sink->Stop();
        EXPECT_EQ(m_opened.filter->Stop(), S_OK);
    }

    HRESULT m_made = S_OK;
    test_support::FakeGraph m_graph;
    OpenedSource m_opened;
    win::ComPtr<IPin> m_pin;
    win::ComPtr<CollectingFilter> m_sink{new CollectingFilter(&m_made)};
};

TEST_F(SourceFilter, OffersEveryTypeOfAStreamInItsOrderAndNoPinForAStreamWithout) {
    Open(std::make_unique<ScriptedReader>(std::vector<Packet>()));
    win::ComPtr<IPin> second;
    EXPECT_EQ(m_opened.filter->FindPin(OLESTR("Second"), second.Put()), VFW_E_NOT_FOUND);
    win::ComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(m_pin->EnumMediaTypes(types.Put()), S_OK);
    std::vector<GUID> subtypes;
    AM_MEDIA_TYPE* type = nullptr;
    while (types->Next(1, &type, nullptr) == S_OK) {
        subtypes.push_back(type->subtype);
        DeleteMediaType(type);
    }
    ASSERT_EQ(subtypes.size(), 2u);
    EXPECT_EQ(subtypes[0], mediasubtype::kDolbyAc3);
    EXPECT_EQ(subtypes[1], mediasubtype::kAc3WaveTag);
    ASSERT_EQ(m_opened.streams.size(), 2u);
    EXPECT_EQ(m_opened.streams[1].problem, "V_ODD: no media type carries this codec");
}

TEST_F(SourceFilter, BuffersGrowWithThePackets) {
    const size_t sizes[] = {1, 65536, 65537, 1'000'000, 3, 5'000'000};
    std::vector<Packet> packets;
    for (const size_t size : sizes) {
        packets.push_back(PacketOf(size, static_cast<REFERENCE_TIME>(packets.size()) * 100));
    }
    Open(std::make_unique<ScriptedReader>(packets));
    Start();
    ASSERT_TRUE(m_sink->Pin().WaitForEnd(10s));
    Stop();
    const auto samples = m_sink->Pin().Samples();
    ASSERT_EQ(samples.size(), std::size(sizes));
    for (size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(samples[i].data, std::string(sizes[i], static_cast<char>(sizes[i])));
        EXPECT_EQ(samples[i].start, static_cast<REFERENCE_TIME>(i) * 100);
        EXPECT_EQ(samples[i].stop, samples[i].start + 10);
        EXPECT_TRUE(samples[i].keyframe);
    }
}

TEST_F(SourceFilter, PacketsOfAStreamWithoutAPinAreDropped) {
    Open(std::make_unique<ScriptedReader>(std::vector{PacketOf(1, 0, 1), PacketOf(2, 5), PacketOf(3, 9, 1)}));
    Start();
    ASSERT_TRUE(m_sink->Pin().WaitForEnd(10s));
    Stop();
    ASSERT_EQ(m_sink->Pin().Samples().size(), 1u);
    EXPECT_EQ(m_sink->Pin().Samples()[0].data.size(), 2u);
}

TEST_F(SourceFilter, DamageIsToldToTheGraphBeforeTheEnd) {
    Open(std::make_unique<ScriptedReader>(std::vector{PacketOf(1, 0)}, false, E_FAIL));
    EXPECT_EQ(m_opened.damage->load(), S_OK);
    Start();
    ASSERT_TRUE(m_sink->Pin().WaitForEnd(10s));
    Stop();
    ASSERT_EQ(m_graph.EventCount(EC_STREAM_ERROR_STILLPLAYING), 1);
    EXPECT_EQ(static_cast<HRESULT>(m_graph.Events().front().parameter1), E_FAIL);
    EXPECT_EQ(m_opened.damage->load(), E_FAIL);
}

TEST_F(SourceFilter, AReaderThatThrowsEndsTheRunWithAnErrorAndNothingElse) {
    Open(std::make_unique<ScriptedReader>(std::vector{PacketOf(1, 0)}, true));
    Start();
    EXPECT_TRUE(m_graph.WaitForEvent(EC_ERRORABORT, 10s));
    Stop();
}

TEST_F(SourceFilter, APacketThatTheAllocatorRefusesIsLostAndToldAndTheOthersArrive) {
    test_source::WaryAllocator allocator;
    allocator.RefuseAbove(1'000'000);
    m_sink->Pin().OfferAllocator(&allocator);
    Open(std::make_unique<ScriptedReader>(std::vector{PacketOf(10, 0), PacketOf(5'000'000, 100), PacketOf(20, 200)}));
    Start();
    ASSERT_TRUE(m_sink->Pin().WaitForEnd(60s));
    Stop();
    const auto samples = m_sink->Pin().Samples();
    ASSERT_EQ(samples.size(), 2u);
    EXPECT_EQ(samples[1].data.size(), 20u);
    EXPECT_EQ(m_opened.damage->load(), E_OUTOFMEMORY);
    EXPECT_EQ(m_graph.EventCount(EC_STREAM_ERROR_STILLPLAYING), 1);
    Close();
}

TEST_F(SourceFilter, ASampleThatIsSmallerThanItsAllocatorPromisesIsNotWrittenBeyond) {
    test_source::WaryAllocator allocator;
    allocator.PromiseAbove(70'000);
    m_sink->Pin().OfferAllocator(&allocator);
    Open(std::make_unique<ScriptedReader>(std::vector{PacketOf(10, 0), PacketOf(200'000, 100), PacketOf(20, 200)}));
    Start();
    ASSERT_TRUE(m_sink->Pin().WaitForEnd(60s));
    Stop();
    EXPECT_FALSE(allocator.WroteBehindTheSize());
    EXPECT_EQ(m_sink->Pin().Samples().size(), 2u);
    EXPECT_EQ(m_opened.damage->load(), VFW_E_BUFFER_OVERFLOW);
    Close();
}

TEST_F(SourceFilter, LargePacketsGetFewerBuffersAndTheirProductStaysSmall) {
    test_source::WaryAllocator allocator;
    m_sink->Pin().OfferAllocator(&allocator);
    Open(std::make_unique<ScriptedReader>(
        std::vector{PacketOf(60'000'000, 0), PacketOf(kMaxPacketBytes + 1, 50), PacketOf(kMaxPacketBytes, 100)}));
    Start();
    ASSERT_TRUE(m_sink->Pin().WaitForEnd(60s));
    Stop();
    const auto samples = m_sink->Pin().Samples();
    ASSERT_EQ(samples.size(), 2u);
    EXPECT_EQ(samples[0].data.size(), 60'000'000u);
    EXPECT_EQ(samples[1].data.size(), kMaxPacketBytes);
    EXPECT_EQ(m_opened.damage->load(), HRESULT_FROM_WIN32(ERROR_FILE_CORRUPT));
    EXPECT_LE(allocator.LargestPool(), LONGLONG{1} << 27);
    Close();
}

bool IsOurs(IMemAllocator* allocator) {
    return dynamic_cast<CPacketAllocator*>(allocator) != nullptr;
}

TEST_F(SourceFilter, BuffersAreOursWhereThePeerHasOnlyTheSystems) {
    Open(std::make_unique<ScriptedReader>(std::vector{PacketOf(10, 0)}));
    EXPECT_TRUE(IsOurs(m_sink->Pin().Agreed()));
    Close();
}

TEST_F(SourceFilter, BuffersAreThePeersWhereItHasSomeOfItsOwn) {
    test_source::WaryAllocator allocator;
    m_sink->Pin().OfferAllocator(&allocator);
    Open(std::make_unique<ScriptedReader>(std::vector{PacketOf(10, 0)}));
    EXPECT_EQ(m_sink->Pin().Agreed(), &allocator);
    Close();
}

TEST_F(SourceFilter, BuffersAreTheSystemsWhereThePeerInsistsOnThem) {
    win::ComPtr<IMemAllocator> systems;
    ASSERT_EQ(CreateMemoryAllocator(systems.Put()), S_OK);
    m_sink->Pin().OfferAllocator(systems.Get());
    m_sink->Pin().InsistOnOffer();
    Open(std::make_unique<ScriptedReader>(std::vector{PacketOf(10, 0), PacketOf(1'000'000, 50), PacketOf(3, 100)}));
    EXPECT_EQ(m_sink->Pin().Agreed(), systems.Get());
    Start();
    ASSERT_TRUE(m_sink->Pin().WaitForEnd(10s));
    Stop();
    const auto samples = m_sink->Pin().Samples();
    ASSERT_EQ(samples.size(), 3u);
    EXPECT_EQ(samples[1].data, std::string(1'000'000, static_cast<char>(1'000'000)));
    EXPECT_EQ(samples[2].data, std::string(3, '\3'));
    Close();
}

TEST_F(SourceFilter, APeerThatKeepsSamplesHoldsTheProducerUpUntilItGivesOneBack) {
    m_sink->Pin().KeepSamples();
    std::vector<Packet> packets;
    for (size_t i = 0; i < 6; ++i) {
        packets.push_back(PacketOf(i + 1, static_cast<REFERENCE_TIME>(i) * 100));
    }
    Open(std::make_unique<ScriptedReader>(packets));
    Start();
    ASSERT_TRUE(m_sink->Pin().WaitForSamples(4, 10s));
    EXPECT_FALSE(m_sink->Pin().WaitForSamples(5, 0s)); // all four buffers are out
    m_sink->Pin().ReleaseSamples();
    ASSERT_TRUE(m_sink->Pin().WaitForEnd(10s));
    Stop();
    const auto samples = m_sink->Pin().Samples();
    ASSERT_EQ(samples.size(), 6u);
    for (size_t i = 0; i < samples.size(); ++i) {
        EXPECT_EQ(samples[i].data, std::string(i + 1, static_cast<char>(i + 1)));
    }
    Close();
    m_opened.filter->JoinFilterGraph(nullptr, nullptr);
    m_opened = {};
    m_sink->Pin().ReleaseSamples(); // those that outlived filter and run
}

TEST_F(SourceFilter, StopsWhileThePeerHoldsTheBuffersThatShallGrow) {
    m_sink->Pin().KeepSamples();
    Open(std::make_unique<ScriptedReader>(std::vector{PacketOf(10, 0), PacketOf(1'000'000, 100)}));
    Start();
    ASSERT_TRUE(m_sink->Pin().WaitForSamples(1, 10s));
    Stop(); // must not wait for the kept sample
    m_sink->Pin().ReleaseSamples();
    EXPECT_EQ(m_sink->Pin().Samples().size(), 1u);
}

} // namespace
} // namespace source
