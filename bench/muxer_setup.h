// MuxerSetup: a muxer filter between as many sources as a load has inputs and a sink over the given stream.
//
// Owner: the measurement; the stream outlives it. Threads: one, but each input belongs to its producer's thread.
// Errors: std::runtime_error for whatever a graph would not get past.
#pragma once

#include <memory>
#include <vector>

#include "bench/load.h"
#include "bench/stream_sink_pin.h"
#include "matroska_muxer/matroska_muxer.h"
#include "tests/support/fake_graph.h"
#include "tests/support/fake_upstream_pin.h"
#include "win/com_ptr.h"

namespace bench {

class MuxerSetup {
  public:
    MuxerSetup(const Load& load, IStream& stream);
    // An input for each type.
    MuxerSetup(const std::vector<test_support::MediaTypeValue>& types, IStream& stream);
    ~MuxerSetup();
    MuxerSetup(const MuxerSetup&) = delete;
    MuxerSetup& operator=(const MuxerSetup&) = delete;

    [[nodiscard]] CMatroskaMuxer& Muxer() const { return *m_muxer; }
    [[nodiscard]] test_support::FakeUpstreamPin& Input(size_t n) { return *m_inputs.at(n); }

    void Pause();
    void WaitForEndOfStream() { m_sink.WaitForEndOfStream(); }
    void Stop();

  private:
    void CreateMuxer();
    void ConnectInput(const test_support::MediaTypeValue& type);

    test_support::FakeGraph m_graph;
    StreamSinkPin m_sink;
    std::vector<std::unique_ptr<test_support::FakeUpstreamPin>> m_inputs;
    win::ComPtr<IBaseFilter> m_filter;
    CMatroskaMuxer* m_muxer = nullptr; // behind m_filter
};

// std::runtime_error with that text when the result says failure.
void Demand(HRESULT hr, const char* what);

} // namespace bench
