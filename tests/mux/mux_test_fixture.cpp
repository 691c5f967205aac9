#include "tests/mux/mux_test_fixture.h"

using test_support::FakeUpstreamPin;
using test_support::MediaTypeValue;

void MuxTest::CloseMuxer() {
    if (!mux) {
        return;
    }
    mux->Stop();
    for (const auto& upstream : upstreams) {
        upstream->Unplug();
    }
    sink.Unplug();
    mux->JoinFilterGraph(nullptr, nullptr);
    mux.Reset();
    EXPECT_EQ(objectsBefore, CBaseObject::ObjectsActive());
#ifdef QRX_NATIVE
    EXPECT_EQ(handlesBefore, native::OpenHandleCount());
    EXPECT_EQ(sectionsBefore, native::LiveCriticalSectionCount());
#endif
}

FakeUpstreamPin& MuxTest::ConnectInput(const MediaTypeValue& type) {
    auto upstream = std::make_unique<FakeUpstreamPin>(type);
    for (int n = 0; n < mux->GetPinCount(); ++n) {
        CBasePin* const pin = mux->GetPin(n);
        PIN_DIRECTION direction = PINDIR_OUTPUT;
        pin->QueryDirection(&direction);
        if (direction == PINDIR_INPUT && !pin->IsConnected()) {
            EXPECT_EQ(S_OK, upstream->ConnectTo(pin));
            break;
        }
    }
    EXPECT_NE(nullptr, upstream->Input());
    upstreams.push_back(std::move(upstream));
    return *upstreams.back();
}

FakeUpstreamPin& MuxTest::ConnectVideo() {
    return ConnectInput(test_support::VideoInfoType(mediasubtype::kVp8));
}

FakeUpstreamPin& MuxTest::ConnectAudio() {
    return ConnectInput(test_support::WaveType(mediasubtype::kPcm));
}

FakeUpstreamPin& MuxTest::ConnectSubtitle() {
    return ConnectInput(test_support::SubtitleType(mediasubtype::kUtf8));
}

FakeUpstreamPin& MuxTest::ConnectOther() {
    return ConnectInput(MediaTypeValue(MEDIATYPE_Stream, GUID_NULL, GUID_NULL));
}
