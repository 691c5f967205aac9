// MuxerRig: a muxer filter in a small graph of fakes: its sink, its graph, and as many sources as a test plugs in.
//
// Units: times in milliseconds where named so. Owner: the test. Threads: one.
// Errors: as the filter answers; its references are checked when the rig goes.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "matroska_muxer/matroska_muxer.h"
#include "records/track_settings_row.h"
#include "tests/support/fake_graph.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"
#include "tests/support/matroska_layout.h"
#include "tests/support/media_types.h"
#include "win/com_ptr.h"

class MuxerRig {
  public:
    explicit MuxerRig(test_support::FakeSinkPin::StreamOffer offer = test_support::FakeSinkPin::StreamOffer::Offered);
    ~MuxerRig();
    MuxerRig(const MuxerRig&) = delete;
    MuxerRig& operator=(const MuxerRig&) = delete;

    [[nodiscard]] IBaseFilter* Filter() const { return m_filter.Get(); }
    [[nodiscard]] CMatroskaMuxer& Muxer() const { return *m_muxer; }
    [[nodiscard]] IModuleConfig* Config() const { return m_config.Get(); }
    [[nodiscard]] test_support::FakeSinkPin& Sink() { return m_sink; }
    [[nodiscard]] test_support::FakeGraph& Graph() { return m_graph; }
    // The n-th source that was plugged in.
    [[nodiscard]] test_support::FakeUpstreamPin& Input(size_t n) { return *m_inputs.at(n); }

    HRESULT ConnectOutput();
    // Plugs a source of that type into the free input.
    HRESULT ConnectInput(const test_support::MediaTypeValue& type);

    // The parameters, as applications set and get them.
    void SetRow(const TrackSettings& row);
    // None where the filter has no row.
    [[nodiscard]] std::optional<records::CTrackSettingsRow> Row(INT32 index) const;
    [[nodiscard]] size_t RowCount() const;
    [[nodiscard]] ULONG DocType() const;

    HRESULT Pause() { return m_filter->Pause(); }
    HRESULT Stop() { return m_filter->Stop(); }
    // One sample of 16 bytes.
    HRESULT Deliver(size_t input, INT64 startMs, INT64 durationMs, bool syncPoint = true);
    // Every source ends its stream; waits until the sink has heard of it.
    [[nodiscard]] bool EndAll();

    // The bytes that reached the sink, and what our own reader makes of them; both as of the call.
    [[nodiscard]] const std::vector<BYTE>& File();
    [[nodiscard]] test_support::MatroskaLayout Layout();

  private:
    test_support::FakeGraph m_graph;
    test_support::FakeSinkPin m_sink;
    std::vector<std::unique_ptr<test_support::FakeUpstreamPin>> m_inputs;
    win::ComPtr<IBaseFilter> m_filter;
    win::ComPtr<IModuleConfig> m_config;
    CMatroskaMuxer* m_muxer = nullptr; // behind m_filter
    LONG m_objectsBefore;
    std::vector<BYTE> m_file;
};
