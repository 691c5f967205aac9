// What an application hears of a full disk through the system's own filter graph.
#include <gtest/gtest.h>

#include <qrx_mkvmuxer.h>

#include "tests/module/loaded_module.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"
#include "tests/support/media_types.h"
#include "tests/support/pin_lookup.h"
#include "win/com_apartment.h"

using namespace test_support;

namespace {

constexpr UINT64 kRoomBytes = UINT64{64} << 10; // of the disk: more than the head of the file, less than a cluster
constexpr size_t kSampleBytes = size_t{256} << 10;
constexpr int kSamples = 64; // 16 MiB: several clusters
constexpr INT64 kSampleTime = 400000;
constexpr long kWatchdogMs = 60000;

class OutputFailedEvent : public ::testing::Test {
  protected:
    OutputFailedEvent() {
        EXPECT_EQ(S_OK, CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                         m_graph.PutVoid()));
        EXPECT_EQ(S_OK,
                  m_module.Factory(CLSID_MatroskaMuxer)->CreateInstance(nullptr, IID_IBaseFilter, m_muxer.PutVoid()));
        m_events = m_graph.Query<IMediaEvent>(IID_IMediaEvent);
        m_control = m_graph.Query<IMediaControl>(IID_IMediaControl);
        EXPECT_EQ(S_OK, m_graph->AddFilter(&m_source.Filter(), L"source"));
        EXPECT_EQ(S_OK, m_graph->AddFilter(m_muxer.Get(), L"muxer"));
        EXPECT_EQ(S_OK, m_graph->AddFilter(&m_sink.Filter(), L"sink"));
        EXPECT_EQ(S_OK, m_source.ConnectTo(PinNamed(m_muxer.Get(), OLESTR("In 0")).Get()));
        EXPECT_EQ(S_OK, PinNamed(m_muxer.Get(), OLESTR("Out"))->Connect(&m_sink, nullptr));
        m_sink.Stream().SetCapacity(kRoomBytes);
    }
    ~OutputFailedEvent() override {
        m_source.Unplug();
        m_sink.Unplug();
        m_graph->RemoveFilter(&m_source.Filter());
        m_graph->RemoveFilter(&m_sink.Filter());
        m_graph->RemoveFilter(m_muxer.Get());
    }

    // All of them, whatever Receive answers: a filter behind a real source may go on as well.
    void DeliverMoreThanFits() {
        for (int i = 0; i < kSamples; ++i) {
            (void)m_source.Deliver(std::vector<BYTE>(kSampleBytes, BYTE{7}), i * kSampleTime, (i + 1) * kSampleTime);
        }
    }
    // The results that came with the event, of those that are there within that time.
    std::vector<HRESULT> Failures(long firstWaitMs) {
        std::vector<HRESULT> failures;
        LONG code = 0;
        LONG_PTR first = 0;
        LONG_PTR second = 0;
        while (m_events->GetEvent(&code, &first, &second, failures.empty() ? firstWaitMs : 0) == S_OK) {
            if (code == MuxEvent_OutputFailed) {
                failures.push_back(static_cast<HRESULT>(first));
                EXPECT_EQ(0, second);
            }
            m_events->FreeEventParams(code, first, second);
        }
        return failures;
    }
    [[nodiscard]] OAFilterState State() const {
        OAFilterState state = State_Stopped;
        EXPECT_EQ(S_OK, m_control->GetState(kWatchdogMs, &state));
        return state;
    }
    void RunIntoTheFullDisk() {
        ASSERT_EQ(S_OK, m_control->Run());
        DeliverMoreThanFits();
        EXPECT_EQ(std::vector<HRESULT>{STG_E_MEDIUMFULL}, Failures(kWatchdogMs));
        EXPECT_EQ(State_Running, State()) << "the event stops no graph by itself";
        ASSERT_EQ(S_OK, m_control->Stop());
        EXPECT_TRUE(Failures(0).empty()) << "once a run";
    }

    const win::ComApartment m_apartment{CoInitializeEx(nullptr, COINIT_MULTITHREADED)};
    const LoadedModule m_module;
    FakeUpstreamPin m_source{VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd'))};
    FakeSinkPin m_sink;
    win::ComPtr<IGraphBuilder> m_graph;
    win::ComPtr<IBaseFilter> m_muxer;
    win::ComPtr<IMediaEvent> m_events;
    win::ComPtr<IMediaControl> m_control;
};

TEST_F(OutputFailedEvent, ReachesTheApplicationOnceARunAndStopsNothing) {
    RunIntoTheFullDisk();
    RunIntoTheFullDisk();
}

TEST_F(OutputFailedEvent, IsNotSentWhenAllFits) {
    m_sink.Stream().SetCapacity(UINT64{64} << 20);
    ASSERT_EQ(S_OK, m_control->Run());
    DeliverMoreThanFits();
    ASSERT_EQ(S_OK, m_control->Stop());
    EXPECT_TRUE(Failures(0).empty());
}

} // namespace
