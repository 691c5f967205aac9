#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "tests/support/fake_graph.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"
#include "tests/support/media_types.h"
#include "tests/support/pin_lookup.h"
#include "tests/support/watchdog.h"

namespace test_support {
namespace {

using namespace std::chrono_literals;

const GUID kNoFormat{};

MediaTypeValue StreamType() {
    return {MEDIATYPE_Stream, kNoFormat, kNoFormat};
}

TEST(FakePins, ConnectDeliverAndDisconnect) {
    FakeUpstreamPin upstream{StreamType()};
    FakeSinkPin sink;
    EXPECT_EQ(upstream.Deliver({1}, 0, 1), VFW_E_NOT_CONNECTED);
    ASSERT_EQ(upstream.ConnectTo(&sink), S_OK);
    EXPECT_EQ(sink.Peer(), &upstream);
    EXPECT_EQ(sink.NotifiedAllocator(), &upstream.Allocator());
    EXPECT_EQ(upstream.ConnectTo(&sink), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(upstream.Deliver({1}, 0, 1), S_OK);
    EXPECT_EQ(upstream.DeliverBeginFlush(), S_OK);
    EXPECT_EQ(upstream.DeliverEndFlush(), S_OK);
    EXPECT_EQ(upstream.DeliverNewSegment(0, 1), S_OK);
    EXPECT_EQ(upstream.DeliverEndOfStream(), S_OK);
    const FakeSinkPin::Received counts = sink.Counts();
    EXPECT_EQ(counts.samples, 1);
    EXPECT_EQ(counts.beginFlushes, 1);
    EXPECT_EQ(counts.endFlushes, 1);
    EXPECT_EQ(counts.newSegments, 1);
    EXPECT_EQ(counts.endsOfStream, 1);
    upstream.Unplug();
    EXPECT_EQ(sink.Peer(), nullptr);
    EXPECT_EQ(upstream.References(), 0);
    EXPECT_EQ(sink.References(), 0);
    EXPECT_EQ(upstream.Allocator().References(), 0);
}

TEST(FakePins, TheSinkTakesByteStreamsOnly) {
    FakeUpstreamPin upstream{TextType()};
    FakeSinkPin sink;
    EXPECT_EQ(upstream.ConnectTo(&sink), VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(upstream.Peer(), nullptr);
}

TEST(FakePins, TheSinksStreamIsOneObjectWithThePin) {
    FakeSinkPin sink;
    win::ComPtr<IPin> pin(&sink);
    win::ComPtr<IStream> stream = pin.Query<IStream>(IID_IStream);
    ASSERT_TRUE(stream);
    EXPECT_EQ(sink.Stream().References(), 1);
    EXPECT_EQ(stream.Query<IPin>(IID_IPin).Get(), pin.Get());
    EXPECT_EQ(stream.Query<IUnknown>(IID_IUnknown).Get(), pin.Query<IUnknown>(IID_IUnknown).Get());
    stream.Reset();
    pin.Reset();
    EXPECT_EQ(sink.References(), 0);
    FakeSinkPin without(FakeSinkPin::StreamOffer::None);
    EXPECT_FALSE(win::ComPtr<IPin>(&without).Query<IStream>(IID_IStream));
}

TEST(FakePins, EnumeratorsGiveTypesAndPins) {
    FakeUpstreamPin upstream{WaveType(mediasubtype::kPcm)};
    win::ComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(upstream.EnumMediaTypes(types.Put()), S_OK);
    AM_MEDIA_TYPE* type = nullptr;
    ASSERT_EQ(types->Next(1, &type, nullptr), S_OK);
    EXPECT_TRUE(SameMediaType(*type, WaveType(mediasubtype::kPcm).Get()));
    FreeTaskMemoryFormat(*type);
    CoTaskMemFree(type);
    EXPECT_EQ(types->Next(1, &type, nullptr), S_FALSE);
    types.Reset();
    const std::vector<win::ComPtr<IPin>> pins = PinsOf(&upstream.Filter());
    ASSERT_EQ(pins.size(), 1u);
    EXPECT_EQ(pins[0].Get(), &upstream);
    EXPECT_EQ(PinNamed(&upstream.Filter(), OLESTR("Upstream")).Get(), &upstream);
    EXPECT_FALSE(PinNamed(&upstream.Filter(), OLESTR("Nobody")));
}

TEST(FakePins, WaitingEndsWithTheEventOrWithTheTime) {
    FakeSinkPin sink;
    FakeGraph graph;
    EXPECT_FALSE(sink.WaitForEndOfStream(1ms));
    EXPECT_FALSE(graph.WaitForEvent(EC_COMPLETE, 1ms));
    std::thread worker([&] {
        sink.EndOfStream();
        graph.Notify(EC_COMPLETE, S_OK, 7);
    });
    EXPECT_TRUE(sink.WaitForEndOfStream(kWatchdog));
    EXPECT_TRUE(graph.WaitForEvent(EC_COMPLETE, kWatchdog));
    worker.join();
    ASSERT_EQ(graph.EventCount(EC_COMPLETE), 1);
    EXPECT_EQ(graph.Events()[0].parameter2, 7);
}

TEST(FakeSamples, TimesAreAnsweredAsDocumented) {
    FakeMediaSample sample(Bytes{1, 2, 3});
    REFERENCE_TIME start = -1;
    REFERENCE_TIME stop = -1;
    EXPECT_EQ(sample.GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);
    sample.WithStartOnly(5);
    EXPECT_EQ(sample.GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(start, 5);
    EXPECT_EQ(stop, 6);
    sample.WithTimes(5, 9).WithSyncPoint();
    EXPECT_EQ(sample.GetTime(&start, &stop), S_OK);
    EXPECT_EQ(stop, 9);
    EXPECT_EQ(sample.IsSyncPoint(), S_OK);
    EXPECT_EQ(sample.IsDiscontinuity(), S_FALSE);
    EXPECT_EQ(sample.GetActualDataLength(), 3);
}

// The layouts of the format blocks, byte for byte where readers depend on them.
TEST(MediaTypes, FormatBlocksHaveTheirPublishedLengths) {
    EXPECT_EQ(VideoInfoType(mediasubtype::kVp8)->cbFormat, 88u);
    EXPECT_EQ(VideoInfo2Type(mediasubtype::kVp9, {}, {1, 2})->cbFormat, 112u + 2);
    EXPECT_EQ(Mpeg1VideoType({}, {1, 2, 3})->cbFormat, 96u + 3);
    EXPECT_EQ(Mpeg2VideoType(mediasubtype::kAvc1, {}, {1, 2, 3, 4})->cbFormat, 132u + 4);
    EXPECT_EQ(WaveType(mediasubtype::kPcm)->cbFormat, 18u);
    EXPECT_EQ(WaveType(mediasubtype::kRawAac, {}, {1, 2})->cbFormat, 20u);
    EXPECT_EQ(VorbisType({}, std::array<Bytes, 3>{Bytes(3), Bytes(4), Bytes(5)})->cbFormat, 24u + 12);
    EXPECT_EQ(SubtitleType(mediasubtype::kAss)->cbFormat, 520u);
    EXPECT_EQ(SubtitleType(mediasubtype::kAss, {1})->cbFormat, 521u);
    EXPECT_EQ(TextType()->cbFormat, 0u);
}

TEST(MediaTypes, CopiesAreDeepAndCutsAreExact) {
    const MediaTypeValue original = WaveType(mediasubtype::kRawAac, {}, {1, 2});
    const MediaTypeValue copy = original;
    EXPECT_NE(copy->pbFormat, original->pbFormat);
    EXPECT_TRUE(SameMediaType(copy.Get(), original.Get()));
    const MediaTypeValue cut = original.CutTo(5);
    EXPECT_EQ(cut->cbFormat, 5u);
    EXPECT_EQ(original.CutTo(0)->pbFormat, nullptr);
}

} // namespace
} // namespace test_support
