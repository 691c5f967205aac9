#include "bench/muxer_setup.h"

#include <cstdio>
#include <stdexcept>

#include "tests/support/pin_lookup.h"

namespace bench {

void Demand(HRESULT hr, const char* what) {
    if (FAILED(hr)) {
        char text[128];
        std::snprintf(text, sizeof(text), "%s failed: 0x%08x", what, static_cast<unsigned>(hr));
        throw std::runtime_error(text);
    }
}

MuxerSetup::MuxerSetup(const Load& load, IStream& stream)
    : MuxerSetup(std::vector<test_support::MediaTypeValue>(load.inputs, load.type), stream) {}

MuxerSetup::MuxerSetup(const std::vector<test_support::MediaTypeValue>& types, IStream& stream) : m_sink(stream) {
    CreateMuxer();
    Demand(test_support::PinNamed(m_filter.Get(), OLESTR("Out"))->Connect(&m_sink, nullptr), "connecting the sink");
    for (const auto& type : types) {
        ConnectInput(type);
    }
}

MuxerSetup::~MuxerSetup() {
    m_filter->Stop();
    for (auto& input : m_inputs) {
        input->Unplug();
    }
    m_sink.Unplug();
    m_filter->JoinFilterGraph(nullptr, nullptr);
}

void MuxerSetup::CreateMuxer() {
    HRESULT hr = S_OK;
    CUnknown* const object = CMatroskaMuxer::CreateInstance(nullptr, &hr);
    object->NonDelegatingAddRef();
    const HRESULT queried = object->NonDelegatingQueryInterface(IID_IBaseFilter, m_filter.PutVoid());
    m_muxer = static_cast<CMatroskaMuxer*>(object);
    object->NonDelegatingRelease();
    Demand(hr, "creating the muxer");
    Demand(queried, "asking the muxer for IBaseFilter");
    Demand(m_filter->JoinFilterGraph(&m_graph, OLESTR("muxer")), "joining the graph");
}

// The free input is always the last pin.
void MuxerSetup::ConnectInput(const test_support::MediaTypeValue& type) {
    const auto pins = test_support::PinsOf(m_filter.Get());
    auto source = std::make_unique<test_support::FakeUpstreamPin>(type);
    Demand(source->ConnectTo(pins.back().Get()), "connecting an input");
    m_inputs.push_back(std::move(source));
}

void MuxerSetup::Pause() {
    Demand(m_filter->Pause(), "Pause");
}

void MuxerSetup::Stop() {
    Demand(m_filter->Stop(), "Stop");
}

} // namespace bench
