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
    HRESULT hr = S_OK;
    CUnknown* const object = CMatroskaMuxer::CreateInstance(nullptr, &hr);
    EXPECT_EQ(S_OK, hr);
    object->NonDelegatingAddRef();
    EXPECT_EQ(S_OK, object->NonDelegatingQueryInterface(IID_IBaseFilter, m_filter.PutVoid()));
    EXPECT_EQ(S_OK, object->NonDelegatingQueryInterface(IID_IModuleConfig, m_config.PutVoid()));
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
    m_config.Reset();
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
            const HRESULT hr = source->ConnectTo(pin.Get());
            if (SUCCEEDED(hr)) {
                m_inputs.push_back(std::move(source));
            }
            return hr;
        }
    }
    return VFW_E_NOT_FOUND;
}

void MuxerRig::SetRow(const TrackSettings& row) {
    VARIANT value{};
    V_BYREF(&value) = const_cast<TrackSettings*>(&row);
    EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_TrackInfo, &value));
}

std::optional<records::CTrackSettingsRow> MuxerRig::Row(INT32 index) const {
    TrackSettings read{};
    read.index = index;
    VARIANT value{};
    V_BYREF(&value) = &read;
    const HRESULT hr = m_config->GetValue(&MKVMUX_TrackInfo, &value);
    if (FAILED(hr)) {
        EXPECT_EQ(E_INVALIDARG, hr);
        return std::nullopt;
    }
    const records::CTrackSettingsRow row(read);
    SysFreeString(read.language);
    SysFreeString(read.name);
    return row;
}

size_t MuxerRig::RowCount() const {
    INT32 count = 0;
    while (Row(count)) {
        ++count;
    }
    return static_cast<size_t>(count);
}

ULONG MuxerRig::DocType() const {
    VARIANT value{};
    EXPECT_EQ(S_OK, m_config->GetValue(&MKVMUX_DocType, &value));
    return V_UI4(&value);
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
