// MuxTest: a muxer in a graph, upstream pins on demand and a sink, and at the end a look at what is left of them.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "mux/worker_request.h"
#include "tests/mux/test_muxer.h"
#include "tests/support/fake_graph.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"
#include "tests/support/media_types.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

class MuxTest : public ::testing::Test {
  protected:
    explicit MuxTest(TestMuxer::Output output = TestMuxer::Output::Present) : mux(TestMuxer::Make(output)) {
        mux->JoinFilterGraph(&graph, OLESTR("Muxer"));
    }
    ~MuxTest() override { CloseMuxer(); }

    // Stops, disconnects and releases the muxer; then nothing of it may be left.
    void CloseMuxer();

    // Connects a new upstream pin with the first free input.
    test_support::FakeUpstreamPin& ConnectInput(const test_support::MediaTypeValue& type);
    test_support::FakeUpstreamPin& ConnectVideo();
    test_support::FakeUpstreamPin& ConnectAudio();
    test_support::FakeUpstreamPin& ConnectSubtitle();
    // Of a kind that the interleaver throttles to 2000 bytes.
    test_support::FakeUpstreamPin& ConnectOther();
    // Between the two nothing is taken and no stall is broken, however long the test takes for the rest. While
    // streaming.
    void HoldTheWorker() { EXPECT_EQ(kWorkerDone, mux->CallWorker(kWorkerIdle)); }
    void LetTheWorkerGo() { EXPECT_EQ(kWorkerDone, mux->CallWorker(kWorkerRun)); }
    [[nodiscard]] HRESULT ConnectOutput() { return static_cast<IPin*>(mux->OutputPin())->Connect(&sink, nullptr); }

    const LONG objectsBefore = CBaseObject::ObjectsActive();
#ifdef QRX_NATIVE
    const size_t handlesBefore = native::OpenHandleCount();
    const size_t sectionsBefore = native::LiveCriticalSectionCount();
#endif
    test_support::FakeGraph graph;
    test_support::FakeSinkPin sink;
    std::vector<std::unique_ptr<test_support::FakeUpstreamPin>> upstreams;
    win::ComPtr<TestMuxer> mux;
};

// A few bytes that tell packets apart.
inline std::vector<BYTE> Data(size_t size, BYTE value = 0x5a) {
    return std::vector<BYTE>(size, value);
}
