// Graphs of the system with filters that stop late or never.
#include "mkvmux/graph_stopper.h"

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "dshow/base_filter.h"
#include "dshow/base_pin.h"
#include "mkvmux/filter_graph.h"
#include "tests/mkvmux/com_test.h"
#include "win/handle.h"

namespace mkvmux {
namespace {

using testing::ElementsAre;

constexpr DWORD kShortPatienceMs = 200;
constexpr DWORD kLongPatienceMs = 600'000; // for what stops by itself, however loaded the machine is
// A muxer takes longer than this, and the rest has this long after it.
constexpr DWORD kSomePatienceMs = 2000;
constexpr std::chrono::milliseconds kLongerThanPatience{kSomePatienceMs + 500};

// A filter without pins that does what the test says before it changes its state, and remembers the changes.
class SteppedFilter final : public CBaseFilter {
  public:
    SteppedFilter() : CBaseFilter(L"Stepped", nullptr, &m_lock, GUID_NULL) {}

    int GetPinCount() override { return 0; }
    CBasePin* GetPin(int) override { return nullptr; }

    STDMETHODIMP Pause() noexcept override {
        const CAutoLock lock(&m_changing);
        if (FAILED(pauseResult)) {
            return pauseResult;
        }
        if (m_State == State_Running) {
            beforePause();
        }
        calls.emplace_back("Pause");
        return CBaseFilter::Pause();
    }

    STDMETHODIMP Stop() noexcept override {
        const CAutoLock lock(&m_changing); // as the muxer: a second call waits for the first
        if (m_State != State_Stopped) {
            calls.emplace_back("Stop");
        }
        const HRESULT hr = CBaseFilter::Stop(); // the state comes first there, too
        beforeStopped();
        return hr;
    }

    HRESULT pauseResult = S_OK;
    std::function<void()> beforePause = [] {};
    std::function<void()> beforeStopped = [] {};
    std::vector<std::string> calls;

  private:
    CCritSec m_lock;
    CCritSec m_changing;
};

class GraphStopperTest : public test_mkvmux::ComTest {
  protected:
    void SetUp() override {
        ComTest::SetUp();
        m_graph = CreateFilterGraph();
        m_control = m_graph.Query<IMediaControl>(IID_IMediaControl);
        ASSERT_TRUE(m_control);
        ASSERT_EQ(m_graph->AddFilter(m_source.Get(), L"Source"), S_OK);
        ASSERT_EQ(m_graph->AddFilter(m_muxer.Get(), L"Muxer"), S_OK);
        ASSERT_TRUE(SUCCEEDED(m_control->Run()));
        m_source->calls.clear();
        m_muxer->calls.clear();
    }

    void TearDown() override {
        m_control.Reset();
        m_graph.Reset();
        m_source.Reset();
        m_muxer.Reset();
        WaitUntilNothingIsLeft();
        ComTest::TearDown();
    }

    // A thread that was left behind lets go of the graph a little later.
    static void WaitUntilNothingIsLeft() {
        for (int i = 0; i < 60'000 && CBaseObject::ObjectsActive() != 0; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
    }

    [[nodiscard]] bool Stop(DWORD patienceMs) const {
        return GraphStopper(patienceMs).Stop(m_control, win::ComPtr<IBaseFilter>(m_muxer.Get()));
    }

    // What waits for the end of another thread's stop gives up after this, so that a failing test ends.
    static void WaitFor(HANDLE event) { WaitForSingleObject(event, 600'000); }

    win::KernelHandle m_release{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    win::KernelHandle m_left{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    win::ComPtr<SteppedFilter> m_source{new SteppedFilter};
    win::ComPtr<SteppedFilter> m_muxer{new SteppedFilter};
    win::ComPtr<IGraphBuilder> m_graph;
    win::ComPtr<IMediaControl> m_control;
};

TEST_F(GraphStopperTest, StopsEveryFilter) {
    EXPECT_TRUE(Stop(kLongPatienceMs));
    EXPECT_THAT(m_source->calls, ElementsAre("Pause", "Stop"));
    EXPECT_THAT(m_muxer->calls, ElementsAre("Pause", "Stop"));
}

TEST_F(GraphStopperTest, AfterARefusedStartNoFilterStaysPaused) {
    ASSERT_TRUE(Stop(kLongPatienceMs));
    m_source->calls.clear();
    m_muxer->calls.clear();
    for (SteppedFilter* const refusing : {m_muxer.Get(), m_source.Get()}) {
        refusing->pauseResult = E_ACCESSDENIED;
        EXPECT_EQ(m_control->Run(), E_ACCESSDENIED);
        EXPECT_TRUE(Stop(kLongPatienceMs));
        for (SteppedFilter* const filter : {m_muxer.Get(), m_source.Get()}) {
            FILTER_STATE state = State_Paused;
            EXPECT_EQ(filter->GetState(0, &state), S_OK);
            EXPECT_EQ(state, State_Stopped);
        }
        refusing->pauseResult = S_OK;
    }
}

TEST_F(GraphStopperTest, ASourceThatNeverStopsIsLeftBehindOnceTheMuxerHasStopped) {
    m_source->beforeStopped = [this] {
        WaitFor(m_release.Get());
        SetEvent(m_left.Get());
    };
    EXPECT_FALSE(Stop(kShortPatienceMs));
    EXPECT_THAT(m_muxer->calls, ElementsAre("Pause", "Stop"));
    SetEvent(m_release.Get());
    WaitFor(m_left.Get());
    OAFilterState state = State_Running;
    EXPECT_EQ(m_control->GetState(INFINITE, &state), S_OK); // waits for the other thread to leave the graph
    EXPECT_EQ(state, State_Stopped);
}

TEST_F(GraphStopperTest, TheMuxerGetsAllTheTimeThatItTakes) {
    m_muxer->beforeStopped = [] { std::this_thread::sleep_for(kLongerThanPatience); };
    EXPECT_TRUE(Stop(kSomePatienceMs));
    EXPECT_THAT(m_source->calls, ElementsAre("Pause", "Stop"));
}

TEST_F(GraphStopperTest, ASourceThatStopsLateIsWaitedFor) {
    m_source->beforeStopped = [] { std::this_thread::sleep_for(std::chrono::milliseconds(kShortPatienceMs)); };
    EXPECT_TRUE(Stop(kLongPatienceMs));
}

TEST_F(GraphStopperTest, AMuxerThatIsStillToBePausedIsNotStoppedBefore) {
    m_muxer->beforePause = [] { std::this_thread::sleep_for(kLongerThanPatience); };
    EXPECT_TRUE(Stop(kSomePatienceMs));
    EXPECT_THAT(m_muxer->calls, ElementsAre("Pause", "Stop"));
}

} // namespace
} // namespace mkvmux
