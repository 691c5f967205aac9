#include "tests/matroska_muxer/muxer_rig.h"

#include <gtest/gtest.h>

#include "dshow/base_object.h"
#include "tests/support/pin_lookup.h"
#include "tests/support/watchdog.h"

using namespace test_support;

namespace {

constexpr INT64 kTicksPerMs = 10000; // of 100 ns

} // namespace

MuxerRig::MuxerRig(FakeSinkPin::StreamOffer offer) : m_sink(offer), m_objectsBefore(CBaseObject::ObjectsActive()) {
    HRESULT result = S_OK;
    CUnknown* const object = CMatroskaMuxer::CreateInstance(nullptr, &result);
    EXPECT_EQ(S_OK, result);
    object->NonDelegatingAddRef();
    EXPECT_EQ(S_OK, object->NonDelegatingQueryInterface(IID_IBaseFilter, m_filter.PutVoid()));
    m_muxer = static_cast<CMatroskaMuxer*>(object);
    object->NonDelegatingRelease();
    EXPECT_EQ(S_OK, m_filter->JoinFilterGraph(&m_graph, OLESTR("muxer")));
}

MuxerRig::~MuxerRig() {
    m_filter->Stop();
    for (auto& input : m_inputs) {
        input->Unplug();
    }
    m_sink.Unplug();
    m_filter->JoinFilterGraph(nullptr, nullptr);
    EXPECT_EQ(0u, m_filter.Detach()->Release()) << "somebody still holds the filter";
    EXPECT_EQ(m_objectsBefore, CBaseObject::ObjectsActive());
    EXPECT_EQ(0, m_sink.References());
    EXPECT_EQ(0, m_sink.Stream().References());
}

HRESULT MuxerRig::ConnectOutput() {
    return PinNamed(m_filter.Get(), OLESTR("Out"))->Connect(&m_sink, nullptr);
}

HRESULT MuxerRig::ConnectInput(const MediaTypeValue& type) {
    for (const auto& pin : PinsOf(m_filter.Get())) {
        win::ComPtr<IPin> peer;
        PIN_DIRECTION direction{};
        pin->QueryDirection(&direction);
        if (direction == PINDIR_INPUT && FAILED(pin->ConnectedTo(peer.Put()))) {
            auto source = std::make_unique<FakeUpstreamPin>(type);
            const HRESULT result = source->ConnectTo(pin.Get());
            if (SUCCEEDED(result)) {
                m_inputs.push_back(std::move(source));
            }
            return result;
        }
    }
    return VFW_E_NOT_FOUND;
}

void MuxerRig::SetRow(const TrackSettings& row) {
    EXPECT_NE(records::CTrackSettingsTable::Replaced::OutsideTheTable,
              m_muxer->Settings().Replace(row.index, records::CTrackSettingsRow(row)));
}

HRESULT MuxerRig::Deliver(size_t input, INT64 startMs, INT64 durationMs, bool syncPoint) {
    const std::vector<BYTE> data(16, static_cast<BYTE>(startMs));
    return Input(input).Deliver(data, startMs * kTicksPerMs, (startMs + durationMs) * kTicksPerMs, syncPoint);
}

bool MuxerRig::EndAll() {
    const int endsBefore = m_sink.Counts().endsOfStream; // of earlier runs
    for (auto& input : m_inputs) {
        input->DeliverEndOfStream();
    }
    return m_sink.WaitForEndOfStream(kWatchdog, endsBefore + 1);
}

const std::vector<BYTE>& MuxerRig::File() {
    m_file = m_sink.Stream().Bytes();
    return m_file;
}

MatroskaLayout MuxerRig::Layout() {
    return ReadLayout(File());
}
