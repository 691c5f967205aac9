// The pins of the muxer as the graph and its neighbours see them.
#include <gtest/gtest.h>

#include "tests/mux/mux_test_fixture.h"
#include "tests/support/pin_lookup.h"

namespace {

using test_support::FakeSinkPin;
using test_support::FakeUpstreamPin;
using test_support::NameOf;
using test_support::PinsOf;

using BaseMuxPinsTest = MuxTest;

class BaseMuxWithoutOutputTest : public MuxTest {
  protected:
    BaseMuxWithoutOutputTest() : MuxTest(TestMuxer::Output::Absent) {}
};

TEST_F(BaseMuxPinsTest, AFreshFilterHasTheOutputAndInputIn0AndTheOutputIsPin0) {
    EXPECT_EQ(2, mux->GetPinCount());
    EXPECT_EQ(mux->OutputPin(), mux->GetPin(0));
    EXPECT_TRUE(WideString(mux->GetPin(0)->Name()) == OLESTR("Out"));
    EXPECT_TRUE(WideString(mux->GetPin(1)->Name()) == OLESTR("In 0"));
    EXPECT_EQ(nullptr, mux->GetPin(2));
    EXPECT_EQ(nullptr, mux->GetPin(-1));
    const auto pins = PinsOf(mux.Get());
    ASSERT_EQ(2u, pins.size());
    EXPECT_TRUE(NameOf(pins[0].Get()) == OLESTR("Out"));
    EXPECT_TRUE(NameOf(pins[1].Get()) == OLESTR("In 0"));
}

TEST_F(BaseMuxPinsTest, ConnectingTheLastFreeInputAddsOneAndReconnectingAnEarlierOneDoesNot) {
    FakeUpstreamPin& first = ConnectVideo();
    EXPECT_EQ(3, mux->GetPinCount());
    EXPECT_TRUE(WideString(mux->GetPin(2)->Name()) == OLESTR("In 1"));
    first.Unplug();
    EXPECT_EQ(3, mux->GetPinCount()); // pins are never removed
    FakeUpstreamPin second(test_support::WaveType(mediasubtype::kPcm));
    EXPECT_EQ(S_OK, second.ConnectTo(mux->GetPin(2)));
    EXPECT_EQ(3, mux->GetPinCount()); // In 0 is free again
    second.Unplug();
}

TEST_F(BaseMuxPinsTest, InputsCountTheirPlaceFrom0) {
    for (int i = 0; i < 12; ++i) {
        ConnectVideo();
    }
    EXPECT_EQ(14, mux->GetPinCount());
    EXPECT_TRUE(WideString(mux->GetPin(13)->Name()) == OLESTR("In 12"));
    for (size_t i = 0; i < 13; ++i) {
        EXPECT_EQ(static_cast<INT32>(i), mux->InputPin(i).Index());
    }
}

TEST_F(BaseMuxPinsTest, ANewInputPutsRunningEnumeratorsOutOfSync) {
    win::ComPtr<IEnumPins> pins;
    ASSERT_EQ(S_OK, mux->EnumPins(pins.Put()));
    ConnectVideo();
    win::ComPtr<IPin> pin;
    EXPECT_EQ(VFW_E_ENUM_OUT_OF_SYNC, pins->Next(1, pin.Put(), nullptr));
    EXPECT_EQ(S_OK, pins->Reset());
    EXPECT_EQ(S_OK, pins->Next(1, pin.Put(), nullptr));
}

TEST_F(BaseMuxWithoutOutputTest, WithoutAnOutputTheInputsBeginAt0) {
    EXPECT_EQ(1, mux->GetPinCount());
    EXPECT_TRUE(WideString(mux->GetPin(0)->Name()) == OLESTR("In 0"));
    EXPECT_EQ(nullptr, mux->GetPin(1));
}

TEST_F(BaseMuxPinsTest, AnInputAsksTheMuxerWhichTypesItTakes) {
    mux->acceptsInput = [](const CMediaType& type) {
        return type.majortype == MEDIATYPE_Audio ? S_OK : kMuxFailedResult;
    };
    EXPECT_EQ(S_OK, mux->GetPin(1)->QueryAccept(&test_support::WaveType(mediasubtype::kPcm).Get()));
    FakeUpstreamPin video(test_support::VideoInfoType(mediasubtype::kVp8));
    EXPECT_TRUE(FAILED(video.ConnectTo(mux->GetPin(1))));
    EXPECT_EQ(2, mux->GetPinCount());
    ConnectAudio();
}

TEST_F(BaseMuxPinsTest, WithoutAWishOfTheMuxerEveryTypeIsTaken) {
    EXPECT_EQ(S_OK, mux->GetPin(1)->QueryAccept(&test_support::TextType().Get()));
    EXPECT_EQ(E_POINTER, mux->InputPin(0).CheckMediaType(nullptr));
    EXPECT_EQ(E_POINTER, mux->OutputPin()->CheckMediaType(nullptr));
}

TEST_F(BaseMuxPinsTest, AThrowingTypeCheckIsAFailureToTheOutside) {
    mux->acceptsInput = [](const CMediaType&) -> HRESULT { throw std::bad_alloc(); };
    FakeUpstreamPin video(test_support::VideoInfoType(mediasubtype::kVp8));
    EXPECT_TRUE(FAILED(video.ConnectTo(mux->GetPin(1))));
}

TEST_F(BaseMuxPinsTest, AnInputIsActiveWhenItIsConnected) {
    EXPECT_FALSE(mux->IsInputActive(0));
    ConnectVideo();
    EXPECT_TRUE(mux->IsInputActive(0));
    EXPECT_FALSE(mux->IsInputActive(1));
    EXPECT_FALSE(mux->IsInputActive(-1));
    EXPECT_FALSE(mux->IsInputActive(2));
}

TEST_F(BaseMuxPinsTest, CreatingAPinWithoutAPlaceForItFails) {
    EXPECT_EQ(kMuxFailed, mux->CreateInputPin(nullptr, OLESTR("In 9")));
}

TEST_F(BaseMuxPinsTest, TheBasesAnswersOfTheTable) {
    CMediaType type;
    EXPECT_EQ(S_OK, mux->CBaseMux::CheckInputType(&type));
    EXPECT_EQ(S_OK, mux->SetInputType(nullptr, &type));
    EXPECT_EQ(S_OK, mux->BreakInputConnect(nullptr));
    EXPECT_EQ(S_OK, mux->CheckOutputType(&type));
    EXPECT_EQ(S_OK, mux->SetOutputType(&type));
    EXPECT_EQ(S_OK, mux->BreakOutputConnect());
    EXPECT_EQ(kMuxOk, mux->CBaseMux::ProcessPacket(nullptr, nullptr));
    EXPECT_TRUE(mux->CBaseMux::IsStreamInterleaved(&type));
    EXPECT_EQ(MuxStreamKind::Other, mux->CBaseMux::GetStreamKind(&type));
    EXPECT_EQ(nullptr, mux->GetSetupData());
}

TEST_F(BaseMuxPinsTest, PinsTellTheirFilterAndDirection) {
    for (const auto& pin : PinsOf(mux.Get())) {
        PIN_INFO info{};
        ASSERT_EQ(S_OK, pin->QueryPinInfo(&info));
        EXPECT_EQ(static_cast<IBaseFilter*>(mux.Get()), info.pFilter);
        info.pFilter->Release();
    }
    PIN_DIRECTION direction = PINDIR_INPUT;
    EXPECT_EQ(S_OK, mux->GetPin(0)->QueryDirection(&direction));
    EXPECT_EQ(PINDIR_OUTPUT, direction);
}

TEST_F(BaseMuxPinsTest, PinsCannotBeDisconnectedWhileStreaming) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, ConnectOutput());
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(VFW_E_NOT_STOPPED, video.Peer()->Disconnect());
    EXPECT_EQ(VFW_E_NOT_STOPPED, mux->GetPin(0)->Disconnect());
}

} // namespace
