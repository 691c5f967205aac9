#include <gtest/gtest.h>

#include "tests/dshow/object_count_test.h"
#include "tests/dshow/test_filter.h"
#include "tests/support/fake_media_sample.h"
#include "tests/support/fake_sink_pin.h"

namespace {

using dshow_test::FilterPtr;
using dshow_test::MakeFilter;
using dshow_test::StreamType;
using dshow_test::TestOutputPin;
using test_support::FakeMediaSample;
using test_support::FakeSinkPin;

// A filter whose output goes to a pin that shares no code with it.
class OutputPinTest : public dshow_test::ObjectCountTest {
  protected:
    void TearDown() override {
        filter->Stop();
        sink.Unplug();
        EXPECT_EQ(output.ownAllocator.References(), 0);
        filter.Reset();
        ObjectCountTest::TearDown();
    }
    HRESULT Connect() {
        const CMediaType type = StreamType();
        return output.Connect(&sink, &type);
    }

    FilterPtr filter = MakeFilter();
    TestOutputPin& output = filter->AddOutput();
    FakeSinkPin sink;
};

TEST_F(OutputPinTest, PeersAllocatorIsPreferred) {
    ASSERT_EQ(Connect(), S_OK);
    EXPECT_EQ(output.Allocator(), static_cast<IMemAllocator*>(&sink.Allocator()));
    EXPECT_EQ(sink.NotifiedAllocator(), static_cast<IMemAllocator*>(&sink.Allocator()));
    EXPECT_EQ(sink.Allocator().Requested().cBuffers, 3);
    EXPECT_EQ(sink.Allocator().Requested().cbBuffer, 1000);
    ASSERT_EQ(output.wishes.size(), 1U);
    EXPECT_EQ(output.wishes[0].cbAlign, 1); // never 0, which no allocator takes
    EXPECT_EQ(output.ownAllocator.References(), 0);
}

TEST_F(OutputPinTest, OwnAllocatorServesWhenThePeerHasNone) {
    sink.OfferNoAllocator();
    ASSERT_EQ(Connect(), S_OK);
    EXPECT_EQ(output.Allocator(), static_cast<IMemAllocator*>(&output.ownAllocator));
    EXPECT_EQ(sink.NotifiedAllocator(), static_cast<IMemAllocator*>(&output.ownAllocator));
}

TEST_F(OutputPinTest, OwnAllocatorServesWhenThePeersRefusesTheSize) {
    sink.Allocator().FailSetProperties(VFW_E_BADALIGN);
    ASSERT_EQ(Connect(), S_OK);
    EXPECT_EQ(output.Allocator(), static_cast<IMemAllocator*>(&output.ownAllocator));
    ASSERT_EQ(output.wishes.size(), 2U);
    EXPECT_EQ(output.wishes[1].cBuffers, 0); // the first try leaves no trace in the second
}

TEST_F(OutputPinTest, ConnectionFailsWhenNoAllocatorSuits) {
    sink.Allocator().FailSetProperties(VFW_E_BADALIGN);
    output.ownAllocator.FailSetProperties(E_INVALIDARG);
    EXPECT_EQ(Connect(), E_INVALIDARG);
    EXPECT_FALSE(output.IsConnected());
    EXPECT_EQ(sink.Peer(), nullptr); // told to disconnect
    EXPECT_EQ(output.Allocator(), nullptr);

    sink.OfferNoAllocator();
    output.initAllocator = E_OUTOFMEMORY;
    EXPECT_EQ(Connect(), E_OUTOFMEMORY);
    EXPECT_FALSE(output.IsConnected());
}

TEST_F(OutputPinTest, BreakingTheConnectionLetsGoOfTheAllocator) {
    sink.OfferNoAllocator();
    ASSERT_EQ(Connect(), S_OK);
    ASSERT_EQ(output.Active(), S_OK);
    EXPECT_TRUE(output.ownAllocator.IsCommitted());
    sink.Unplug();
    EXPECT_FALSE(output.ownAllocator.IsCommitted());
    EXPECT_EQ(output.Allocator(), nullptr);
    EXPECT_EQ(output.ownAllocator.References(), 0);
}

TEST_F(OutputPinTest, DeliveriesReachThePeer) {
    ASSERT_EQ(Connect(), S_OK);
    FakeMediaSample sample{{1, 2}};
    EXPECT_EQ(output.Deliver(&sample), S_OK);
    EXPECT_EQ(output.DeliverEndOfStream(), S_OK);
    EXPECT_EQ(output.DeliverBeginFlush(), S_OK);
    EXPECT_EQ(output.DeliverEndFlush(), S_OK);
    EXPECT_EQ(output.DeliverNewSegment(0, 10, 1.0), S_OK);
    const FakeSinkPin::Received received = sink.Counts();
    EXPECT_EQ(received.samples, 1);
    EXPECT_EQ(received.endsOfStream, 1);
    EXPECT_EQ(received.beginFlushes, 1);
    EXPECT_EQ(received.endFlushes, 1);
    EXPECT_EQ(received.newSegments, 1);
}

TEST_F(OutputPinTest, UnconnectedOutputDeliversNothing) {
    FakeMediaSample sample{{1, 2}};
    EXPECT_EQ(output.Deliver(&sample), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(output.DeliverEndOfStream(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(output.DeliverBeginFlush(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(output.DeliverEndFlush(), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(output.DeliverNewSegment(0, 10, 1.0), VFW_E_NOT_CONNECTED);
    IMediaSample* buffer = &sample;
    EXPECT_EQ(output.GetDeliveryBuffer(&buffer, nullptr, nullptr, 0), E_NOINTERFACE);
    EXPECT_EQ(buffer, nullptr);
    EXPECT_EQ(output.Active(), VFW_E_NO_ALLOCATOR);
    EXPECT_EQ(output.Inactive(), VFW_E_NO_ALLOCATOR);
}

TEST_F(OutputPinTest, BuffersComeFromTheAgreedAllocator) {
    ASSERT_EQ(Connect(), S_OK);
    IMediaSample* buffer = nullptr;
    EXPECT_EQ(output.GetDeliveryBuffer(&buffer, nullptr, nullptr, 0), VFW_E_NOT_COMMITTED);
    ASSERT_EQ(filter->Pause(), S_OK);
    EXPECT_EQ(output.GetDeliveryBuffer(&buffer, nullptr, nullptr, 0), VFW_E_TIMEOUT); // the fake has none
    EXPECT_EQ(output.GetDeliveryBuffer(nullptr, nullptr, nullptr, 0), E_POINTER);
}

TEST_F(OutputPinTest, CallsForInputPinsAreUnexpected) {
    EXPECT_EQ(output.EndOfStream(), E_UNEXPECTED);
    EXPECT_EQ(output.BeginFlush(), E_UNEXPECTED);
    EXPECT_EQ(output.EndFlush(), E_UNEXPECTED);
}

} // namespace
