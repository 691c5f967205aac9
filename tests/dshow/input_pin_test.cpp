#include <gtest/gtest.h>

#include "dshow/memory_allocator.h"
#include "tests/dshow/object_count_test.h"
#include "tests/dshow/test_filter.h"
#include "tests/dshow/type_change_sample.h"
#include "tests/support/fake_graph.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

namespace {

using dshow_test::FilterPtr;
using dshow_test::MakeFilter;
using dshow_test::StreamType;
using dshow_test::TestInputPin;
using dshow_test::TestOutputPin;
using dshow_test::TypeChangeSample;
using dshow_test::TypeWithTag;
using test_support::FakeAllocator;
using test_support::FakeGraph;
using test_support::FakeMediaSample;
using test_support::FakeSinkPin;
using test_support::FakeUpstreamPin;
using test_support::MediaTypeValue;
using win::ComPtr;

// A running filter whose input is fed by a pin that shares no code with it.
class InputPinTest : public dshow_test::ObjectCountTest {
  protected:
    void SetUp() override {
        ASSERT_EQ(upstream.ConnectTo(&input), S_OK);
        ASSERT_EQ(filter->Pause(), S_OK);
    }
    void TearDown() override {
        filter->Stop();
        upstream.Unplug();
        filter.Reset();
        ObjectCountTest::TearDown();
    }

    FilterPtr filter = MakeFilter();
    TestInputPin& input = filter->AddInput();
    FakeUpstreamPin upstream{MediaTypeValue(TypeWithTag(1))};
    FakeMediaSample sample{{1, 2, 3}};
};

TEST_F(InputPinTest, SampleIsTakenWhileStreaming) {
    sample.WithTimes(10, 20).WithSyncPoint();
    EXPECT_EQ(input.Receive(&sample), S_OK);
    EXPECT_EQ(input.SampleProps()->tStart, 10);
    EXPECT_EQ(input.SampleProps()->tStop, 20);
    EXPECT_EQ(input.SampleProps()->lActual, 3);
    EXPECT_EQ(input.SampleProps()->dwSampleFlags,
              DWORD{AM_SAMPLE_SPLICEPOINT} | AM_SAMPLE_TIMEVALID | AM_SAMPLE_STOPVALID);
    EXPECT_EQ(sample.References(), 0);
}

TEST_F(InputPinTest, PropertiesFollowTheSample) {
    sample.WithStartOnly(5).WithPreroll().WithDiscontinuity();
    EXPECT_EQ(input.Receive(&sample), S_OK);
    EXPECT_EQ(input.SampleProps()->dwSampleFlags,
              DWORD{AM_SAMPLE_TIMEVALID} | AM_SAMPLE_PREROLL | AM_SAMPLE_DATADISCONTINUITY);
    FakeMediaSample broken{{1}};
    broken.WithPointerFailure(E_ACCESSDENIED);
    EXPECT_EQ(input.Receive(&broken), E_ACCESSDENIED);
}

TEST_F(InputPinTest, UnconnectedPinTakesNoSample) {
    TestInputPin& free = filter->AddInput(OLESTR("free"));
    EXPECT_EQ(free.Receive(&sample), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(free.BeginFlush(), S_OK);
    EXPECT_EQ(free.Inactive(), VFW_E_NO_ALLOCATOR);
    EXPECT_FALSE(free.IsFlushing());
}

TEST_F(InputPinTest, StoppedFilterTakesNoSample) {
    filter->Stop();
    EXPECT_EQ(input.Receive(&sample), VFW_E_WRONG_STATE);
}

TEST_F(InputPinTest, FlushingPinTurnsSamplesAway) {
    EXPECT_FALSE(input.IsFlushing());
    ASSERT_EQ(input.BeginFlush(), S_OK);
    EXPECT_TRUE(input.IsFlushing());
    EXPECT_EQ(input.Receive(&sample), S_FALSE);
    ASSERT_EQ(input.EndFlush(), S_OK);
    EXPECT_EQ(input.Receive(&sample), S_OK);
}

TEST_F(InputPinTest, StopEndsAFlushThatNobodyEnded) {
    ASSERT_EQ(input.BeginFlush(), S_OK);
    filter->Stop();
    EXPECT_FALSE(input.IsFlushing());
}

TEST_F(InputPinTest, NewTypeThatSuitsIsTaken) {
    TypeChangeSample changed(TypeWithTag(2));
    EXPECT_EQ(input.Receive(&changed), S_OK);
    ASSERT_NE(input.SampleProps()->pMediaType, nullptr);
    EXPECT_EQ(dshow_test::TagOf(*input.SampleProps()->pMediaType), 2);
    EXPECT_EQ(input.Receive(&sample), S_OK);
    EXPECT_EQ(input.SampleProps()->pMediaType, nullptr);
}

TEST_F(InputPinTest, NewTypeOfASampleWithPropertiesIsTaken) {
    TypeChangeSample changed(TypeWithTag(4), dshow_test::SampleInterface::Sample2);
    EXPECT_EQ(input.Receive(&changed), S_OK);
    ASSERT_NE(input.SampleProps()->pMediaType, nullptr);
    EXPECT_EQ(dshow_test::TagOf(*input.SampleProps()->pMediaType), 4);
    EXPECT_EQ(input.SampleProps()->lActual, 2);
}

TEST_F(InputPinTest, NewTypeThatDoesNotSuitStopsTheStream) {
    FakeGraph graph;
    ASSERT_EQ(filter->JoinFilterGraph(&graph, nullptr), S_OK);
    input.script.checkMediaType = [](const CMediaType&) { return E_FAIL; };
    TypeChangeSample changed(TypeWithTag(2));
    EXPECT_EQ(input.Receive(&changed), VFW_E_INVALIDMEDIATYPE);
    EXPECT_EQ(input.endsOfStream, 1);
    ASSERT_EQ(graph.Events().size(), 1U);
    EXPECT_EQ(graph.Events()[0].code, EC_ERRORABORT);
    EXPECT_EQ(graph.Events()[0].parameter1, VFW_E_TYPE_NOT_ACCEPTED);
    EXPECT_EQ(input.Receive(&sample), VFW_E_RUNTIME_ERROR);
    ASSERT_EQ(input.BeginFlush(), S_OK);
    ASSERT_EQ(input.EndFlush(), S_OK); // a flush begins the stream anew
    EXPECT_EQ(input.Receive(&sample), S_OK);
    filter->JoinFilterGraph(nullptr, nullptr);
}

TEST_F(InputPinTest, ExceptionInReceiveBecomesAnHresult) {
    input.script.checkMediaType = [](const CMediaType&) -> HRESULT { throw "type"; };
    TypeChangeSample changed(TypeWithTag(2));
    EXPECT_EQ(input.Receive(&changed), E_UNEXPECTED);
}

TEST_F(InputPinTest, ReceiveMultipleCountsWhatWasTaken) {
    FakeMediaSample broken{{1}};
    broken.WithPointerFailure(E_ACCESSDENIED);
    IMediaSample* samples[] = {&sample, &sample, &broken, &sample};
    LONG processed = 99;
    EXPECT_EQ(input.ReceiveMultiple(samples, 2, &processed), S_OK);
    EXPECT_EQ(processed, 2);
    EXPECT_EQ(input.ReceiveMultiple(samples, 4, &processed), E_ACCESSDENIED);
    EXPECT_EQ(processed, 2);
    EXPECT_EQ(input.ReceiveMultiple(samples, -1, &processed), S_OK);
    EXPECT_EQ(processed, 0);
}

TEST_F(InputPinTest, NullPointersAreRefused) {
    LONG processed = 99;
    EXPECT_EQ(input.Receive(nullptr), E_POINTER);
    EXPECT_EQ(input.ReceiveMultiple(nullptr, 1, &processed), E_POINTER);
    EXPECT_EQ(processed, 0);
    IMediaSample* samples[] = {nullptr};
    EXPECT_EQ(input.ReceiveMultiple(samples, 1, nullptr), E_POINTER);
    EXPECT_EQ(input.ReceiveMultiple(samples, 1, &processed), E_POINTER);
    EXPECT_EQ(input.GetAllocator(nullptr), E_POINTER);
    EXPECT_EQ(input.NotifyAllocator(nullptr, FALSE), E_POINTER);
    EXPECT_EQ(input.GetAllocatorRequirements(nullptr), E_POINTER);
}

TEST_F(InputPinTest, AllocatorIsTheOneNotified) {
    filter->Stop();
    FakeAllocator other;
    ASSERT_EQ(input.NotifyAllocator(&other, TRUE), S_OK);
    EXPECT_TRUE(input.IsReadOnly());
    EXPECT_EQ(other.References(), 1);
    ComPtr<IMemAllocator> same;
    ASSERT_EQ(input.GetAllocator(same.Put()), S_OK);
    EXPECT_EQ(same.Get(), &other);
    same.Reset();
    ALLOCATOR_PROPERTIES properties{};
    EXPECT_EQ(input.GetAllocatorRequirements(&properties), E_NOTIMPL);
    ASSERT_EQ(input.Disconnect(), S_OK);
    EXPECT_EQ(other.References(), 0);
}

TEST_F(InputPinTest, WithoutANotifiedAllocatorThePinMakesTheSystems) {
    ASSERT_EQ(CoInitialize(nullptr), S_OK);
    TestInputPin& free = filter->AddInput(OLESTR("free"));
    IMemAllocator* allocator = &upstream.Allocator();
#ifdef QRX_NATIVE
    EXPECT_EQ(free.GetAllocator(&allocator), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(allocator, nullptr);
    FakeAllocator systems;
    const native::ScopedClass offered(CLSID_MemoryAllocator, [&systems](IUnknown*, REFIID iid, void** object) {
        return systems.QueryInterface(iid, object);
    });
#endif
    ASSERT_EQ(free.GetAllocator(&allocator), S_OK);
    ComPtr<IMemAllocator> first;
    first.Attach(allocator);
    ComPtr<IMemAllocator> second;
    ASSERT_EQ(free.GetAllocator(second.Put()), S_OK);
    EXPECT_EQ(first.Get(), second.Get());
    EXPECT_EQ(free.BreakConnect(), S_OK); // lets go of it
    EXPECT_EQ(CreateMemoryAllocator(nullptr), E_POINTER);
    first.Reset();
    second.Reset();
    CoUninitialize();
}

TEST_F(InputPinTest, InputMayBlockIfAnyOutputsPeerMay) {
    EXPECT_EQ(input.ReceiveCanBlock(), S_OK); // no output: the samples end here
    filter->Stop();
    TestOutputPin& output = filter->AddOutput();
    EXPECT_EQ(input.ReceiveCanBlock(), S_FALSE);
    FakeSinkPin sink; // answers that it cannot block
    const CMediaType type = StreamType();
    ASSERT_EQ(output.Connect(&sink, &type), S_OK);
    EXPECT_EQ(input.ReceiveCanBlock(), S_FALSE);

    const FilterPtr downstream = MakeFilter();
    TestInputPin& last = downstream->AddInput();
    TestOutputPin& second = filter->AddOutput(OLESTR("second"));
    ASSERT_EQ(second.Connect(&last, &type), S_OK);
    EXPECT_EQ(input.ReceiveCanBlock(), S_OK);
    second.Disconnect();
    last.Disconnect();
    sink.Unplug();
}

// ---- Quality ----------------------------------------------------------------------------------------------------

// Remembers the last message that came.
class QualitySink final : public IQualityControl {
  public:
    virtual ~QualitySink() = default;
    LONG proportion = 0;
    STDMETHODIMP QueryInterface(REFIID, void**) noexcept override { return E_NOINTERFACE; }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return 1; }
    STDMETHODIMP_(ULONG) Release() noexcept override { return 1; }
    STDMETHODIMP Notify(IBaseFilter*, Quality q) noexcept override {
        proportion = q.Proportion;
        return S_OK;
    }
    STDMETHODIMP SetSink(IQualityControl*) noexcept override { return E_NOTIMPL; }
};

TEST_F(InputPinTest, QualityMessagesGoToTheSinkOrUpstream) {
    Quality message{};
    message.Proportion = 700;
    EXPECT_EQ(input.PassNotify(message), VFW_E_NOT_FOUND); // the peer takes none
    QualitySink sink;
    ASSERT_EQ(input.SetSink(&sink), S_OK);
    EXPECT_EQ(input.PassNotify(message), S_OK);
    EXPECT_EQ(sink.proportion, 700);
    ASSERT_EQ(input.SetSink(nullptr), S_OK);
    EXPECT_EQ(input.Notify(filter.Get(), message), S_OK);
    TestOutputPin& output = filter->AddOutput();
    EXPECT_EQ(output.Notify(filter.Get(), message), E_NOTIMPL);
}

} // namespace
