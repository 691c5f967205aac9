#include <gtest/gtest.h>

#include "tests/dshow/object_count_test.h"
#include "tests/dshow/test_clock.h"
#include "tests/dshow/test_filter.h"
#include "tests/support/fake_graph.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"

namespace {

using dshow_test::FilterPtr;
using dshow_test::HookCalls;
using dshow_test::MakeFilter;
using dshow_test::StreamType;
using dshow_test::TestClock;
using dshow_test::TestFilter;
using dshow_test::TestInputPin;
using dshow_test::TestOutputPin;
using dshow_test::TypeWithTag;
using test_support::FakeGraph;
using test_support::FakeSinkPin;
using test_support::FakeUpstreamPin;
using test_support::MediaTypeValue;
using win::ComPtr;

// A filter with one input, whose connection the tests make, and one output.
class FilterStateTest : public dshow_test::ObjectCountTest {
  protected:
    void TearDown() override {
        filter->Stop();
        upstream.Unplug();
        sink.Unplug();
        filter.Reset();
        ObjectCountTest::TearDown();
    }
    void ConnectBoth() {
        ASSERT_EQ(upstream.ConnectTo(&input), S_OK);
        const CMediaType type = StreamType();
        ASSERT_EQ(output.Connect(&sink, &type), S_OK);
        input.script.calls.clear();
        output.script.calls.clear();
    }
    FILTER_STATE State() const {
        FILTER_STATE state = State_Running;
        EXPECT_EQ(filter->GetState(0, &state), S_OK);
        return state;
    }

    FilterPtr filter = MakeFilter();
    TestInputPin& input = filter->AddInput();
    TestOutputPin& output = filter->AddOutput();
    FakeUpstreamPin upstream{MediaTypeValue(TypeWithTag(1))};
    FakeSinkPin sink;
};

TEST_F(FilterStateTest, UnconnectedFilterChangesStateWithoutItsPins) {
    EXPECT_EQ(State(), State_Stopped);
    EXPECT_EQ(filter->Stop(), S_OK);
    EXPECT_EQ(filter->Pause(), S_OK);
    EXPECT_EQ(State(), State_Paused);
    EXPECT_EQ(filter->Run(0), S_OK);
    EXPECT_EQ(State(), State_Running);
    EXPECT_EQ(filter->Pause(), S_OK);
    EXPECT_EQ(State(), State_Paused);
    EXPECT_EQ(filter->Stop(), S_OK);
    EXPECT_EQ(State(), State_Stopped);
    EXPECT_EQ(filter->Run(0), S_OK); // straight from Stopped
    EXPECT_EQ(State(), State_Running);
    EXPECT_TRUE(input.script.calls.empty());
    EXPECT_TRUE(output.script.calls.empty());
}

TEST_F(FilterStateTest, ConnectedPinsFollowTheState) {
    ConnectBoth();
    ASSERT_EQ(filter->Run(5), S_OK);
    EXPECT_EQ(input.script.calls, (HookCalls{"Active", "Run"}));
    EXPECT_EQ(output.script.calls, (HookCalls{"Active", "Run"}));
    EXPECT_TRUE(filter->IsActive());
    EXPECT_EQ(filter->Run(6), S_OK); // running already
    EXPECT_EQ(filter->Pause(), S_OK);
    EXPECT_EQ(output.script.calls, (HookCalls{"Active", "Run"}));
    EXPECT_EQ(filter->Stop(), S_OK);
    EXPECT_EQ(filter->Stop(), S_OK);
    EXPECT_EQ(output.script.calls, (HookCalls{"Active", "Run", "Inactive"}));
    EXPECT_EQ(input.script.calls, (HookCalls{"Active", "Run", "Inactive"}));
    EXPECT_TRUE(filter->IsStopped());
}

TEST_F(FilterStateTest, AllocatorIsCommittedWhileActive) {
    ConnectBoth();
    ASSERT_EQ(filter->Pause(), S_OK);
    EXPECT_TRUE(sink.Allocator().IsCommitted());
    ASSERT_EQ(filter->Stop(), S_OK);
    EXPECT_FALSE(sink.Allocator().IsCommitted());
}

TEST_F(FilterStateTest, PinThatCannotBecomeActiveKeepsTheFilterStopped) {
    ConnectBoth();
    output.script.active = E_ACCESSDENIED;
    EXPECT_EQ(filter->Pause(), E_ACCESSDENIED);
    EXPECT_EQ(State(), State_Stopped);
    EXPECT_EQ(input.script.calls, (HookCalls{"Active", "Inactive"})); // it had become active already
    EXPECT_EQ(output.script.calls, (HookCalls{"Active"}));
    EXPECT_EQ(filter->Run(0), E_ACCESSDENIED);
    EXPECT_EQ(State(), State_Stopped);
}

TEST_F(FilterStateTest, PinThatCannotRunLeavesTheFilterPaused) {
    ConnectBoth();
    input.script.run = E_ACCESSDENIED;
    EXPECT_EQ(filter->Run(0), E_ACCESSDENIED);
    EXPECT_EQ(State(), State_Paused);
}

TEST_F(FilterStateTest, StopReachesEveryPinAndReportsTheFirstFailure) {
    ConnectBoth();
    ASSERT_EQ(filter->Pause(), S_OK);
    input.script.inactive = E_ABORT;
    output.script.inactive = E_ACCESSDENIED;
    EXPECT_EQ(filter->Stop(), E_ABORT);
    EXPECT_EQ(State(), State_Stopped);
    EXPECT_EQ(output.CountCalls("Inactive"), 1U);
}

TEST_F(FilterStateTest, ExceptionInTheFilterBecomesAnHresult) {
    ConnectBoth();
    filter->throwOnGetPin = true;
    EXPECT_EQ(filter->Pause(), E_UNEXPECTED);
    EXPECT_EQ(State(), State_Stopped);
    filter->throwOnGetPin = false;
    ASSERT_EQ(filter->Pause(), S_OK);
    filter->throwOnGetPin = true;
    EXPECT_EQ(filter->Stop(), E_UNEXPECTED);
    EXPECT_EQ(State(), State_Stopped);
    filter->throwOnGetPin = false;
}

// ---- Clock and graph --------------------------------------------------------------------------------------------

TEST_F(FilterStateTest, StreamTimeCountsFromRun) {
    CRefTime time;
    EXPECT_EQ(filter->StreamTime(time), VFW_E_NO_CLOCK);
    TestClock clock;
    ASSERT_EQ(filter->SetSyncSource(&clock), S_OK);
    EXPECT_EQ(clock.References(), 1);
    ComPtr<IReferenceClock> same;
    ASSERT_EQ(filter->GetSyncSource(same.Put()), S_OK);
    EXPECT_EQ(same.Get(), &clock);
    same.Reset();

    ASSERT_EQ(filter->Run(1'000'000), S_OK);
    clock.now = 1'250'000;
    EXPECT_EQ(filter->StreamTime(time), S_OK);
    EXPECT_EQ(time, 250'000);
    EXPECT_EQ(time.Millisecs(), 25);
    clock.hr = E_FAIL;
    EXPECT_EQ(filter->StreamTime(time), E_FAIL);
    ASSERT_EQ(filter->SetSyncSource(nullptr), S_OK);
    EXPECT_EQ(clock.References(), 0);
    ASSERT_EQ(filter->GetSyncSource(same.Put()), S_OK);
    EXPECT_FALSE(same);
}

TEST_F(FilterStateTest, FilterKnowsItsGraphWithoutHoldingIt) {
    FakeGraph graph;
    FILTER_INFO info{};
    ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
    EXPECT_EQ(info.pGraph, nullptr);
    EXPECT_EQ(info.achName[0], 0);

    ASSERT_EQ(filter->JoinFilterGraph(&graph, OLESTR("my muxer")), S_OK);
    EXPECT_EQ(graph.References(), 0);
    ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
    EXPECT_EQ(info.pGraph, static_cast<IFilterGraph*>(&graph));
    EXPECT_EQ(WideString(info.achName), OLESTR("my muxer"));
    info.pGraph->Release();

    const WideString longName(200, 'n');
    ASSERT_EQ(filter->JoinFilterGraph(&graph, longName.c_str()), S_OK);
    ASSERT_EQ(filter->QueryFilterInfo(&info), S_OK);
    EXPECT_EQ(WideString(info.achName), WideString(MAX_FILTER_NAME - 1, 'n'));
    info.pGraph->Release();

    ASSERT_EQ(filter->JoinFilterGraph(nullptr, nullptr), S_OK);
    EXPECT_EQ(filter->GetFilterGraph(), nullptr);
    EXPECT_EQ(filter->NotifyEvent(EC_USERABORT, 0, 0), E_NOTIMPL);
}

TEST_F(FilterStateTest, CompletionCarriesTheFilter) {
    EXPECT_EQ(filter->NotifyEvent(EC_COMPLETE, S_OK, 0), E_NOTIMPL); // outside a graph
    FakeGraph graph;
    ASSERT_EQ(filter->JoinFilterGraph(&graph, nullptr), S_OK);
    EXPECT_EQ(filter->NotifyEvent(EC_COMPLETE, S_OK, 0), S_OK);
    EXPECT_EQ(filter->NotifyEvent(EC_ERRORABORT, E_FAIL, 7), S_OK);
    const auto events = graph.Events();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[0].code, EC_COMPLETE);
    EXPECT_EQ(events[0].parameter1, S_OK);
    EXPECT_EQ(events[0].parameter2, reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(filter.Get())));
    EXPECT_EQ(events[1].parameter1, E_FAIL);
    EXPECT_EQ(events[1].parameter2, 7);
    filter->JoinFilterGraph(nullptr, nullptr);
}

TEST_F(FilterStateTest, ReconnectingNeedsAGraphThatCan) {
    EXPECT_EQ(filter->ReconnectPin(&input, nullptr), E_NOINTERFACE);
    FakeGraph graph;
    ASSERT_EQ(filter->JoinFilterGraph(&graph, nullptr), S_OK);
    EXPECT_EQ(filter->ReconnectPin(&input, nullptr), E_NOTIMPL); // the answer of the graph
    const CMediaType type = TypeWithTag(1);
    EXPECT_EQ(filter->ReconnectPin(&input, &type), E_NOINTERFACE);
    filter->JoinFilterGraph(nullptr, nullptr);
}

TEST_F(FilterStateTest, FindPinGoesByTheWholeName) {
    ComPtr<IPin> found;
    ASSERT_EQ(filter->FindPin(OLESTR("Out"), found.Put()), S_OK);
    EXPECT_EQ(found.Get(), static_cast<IPin*>(&output));
    IPin* none = &input;
    EXPECT_EQ(filter->FindPin(OLESTR("Ou"), &none), VFW_E_NOT_FOUND);
    EXPECT_EQ(none, nullptr);
    EXPECT_EQ(filter->FindPin(nullptr, &none), E_POINTER);
    EXPECT_EQ(filter->FindPin(OLESTR("Out"), nullptr), E_POINTER);
}

TEST_F(FilterStateTest, FilterAnswersTheRestAsDocumented) {
    CLSID clsid{};
    EXPECT_EQ(filter->GetClassID(&clsid), S_OK);
    EXPECT_EQ(clsid, TestFilter::kClassId);
    LPWSTR vendor = clsid.Data4[0] == 0 ? nullptr : const_cast<LPWSTR>(OLESTR("x"));
    EXPECT_EQ(filter->QueryVendorInfo(&vendor), E_NOTIMPL);
    EXPECT_EQ(vendor, nullptr);
    EXPECT_EQ(filter->GetClassID(nullptr), E_POINTER);
    EXPECT_EQ(filter->GetState(0, nullptr), E_POINTER);
    EXPECT_EQ(filter->GetSyncSource(nullptr), E_POINTER);
    EXPECT_EQ(filter->QueryFilterInfo(nullptr), E_POINTER);
    EXPECT_EQ(filter->QueryVendorInfo(nullptr), E_POINTER);
    EXPECT_EQ(filter->Register(), S_FALSE); // without setup data
    EXPECT_EQ(filter->Unregister(), S_FALSE);
}

} // namespace
