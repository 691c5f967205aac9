#include <cstring>

#include <gtest/gtest.h>

#include "tests/dshow/connection_fixture.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"

namespace {

using dshow_test::ConnectionTest;
using dshow_test::FilterPtr;
using dshow_test::HookCalls;
using dshow_test::MakeFilter;
using dshow_test::StreamType;
using dshow_test::TestInputPin;
using dshow_test::TestOutputPin;
using dshow_test::TypeWithTag;
using test_support::FakeSinkPin;
using test_support::FakeUpstreamPin;
using test_support::MediaTypeValue;
using win::ComPtr;

TEST_F(ConnectionTest, BothPinsKnowPeerAndType) {
    ASSERT_EQ(Connect(TypeWithTag(1)), S_OK);
    ComPtr<IPin> peer;
    ASSERT_EQ(output.ConnectedTo(peer.Put()), S_OK);
    EXPECT_EQ(peer.Get(), static_cast<IPin*>(&input));
    ASSERT_EQ(input.ConnectedTo(peer.Put()), S_OK);
    EXPECT_EQ(peer.Get(), static_cast<IPin*>(&output));

    CMediaType type;
    ASSERT_EQ(input.ConnectionMediaType(&type), S_OK);
    EXPECT_TRUE(type == TypeWithTag(1));
    EXPECT_TRUE(output.IsConnected());
    EXPECT_EQ(output.GetConnected(), static_cast<IPin*>(&input));
}

TEST_F(ConnectionTest, UnconnectedPinSaysSoAndClearsItsOutParameters) {
    IPin* peer = &input;
    EXPECT_EQ(output.ConnectedTo(&peer), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(peer, nullptr);
    AM_MEDIA_TYPE type;
    std::memset(&type, 0xee, sizeof(type));
    EXPECT_EQ(output.ConnectionMediaType(&type), VFW_E_NOT_CONNECTED);
    EXPECT_EQ(type.majortype, GUID_NULL);
    EXPECT_EQ(type.pbFormat, nullptr);
    EXPECT_EQ(type.cbFormat, 0U);
    EXPECT_EQ(type.pUnk, nullptr);
    EXPECT_EQ(output.Disconnect(), S_FALSE);
}

TEST_F(ConnectionTest, ConnectedPinRefusesAnotherPeer) {
    ASSERT_EQ(Connect(TypeWithTag(1)), S_OK);
    const FilterPtr other = MakeFilter();
    TestInputPin& otherInput = other->AddInput();
    TestOutputPin& otherOutput = other->AddOutput();
    const CMediaType type = TypeWithTag(1);
    output.script.calls.clear();
    input.script.calls.clear();
    EXPECT_EQ(output.Connect(&otherInput, &type), VFW_E_ALREADY_CONNECTED);
    EXPECT_EQ(input.ReceiveConnection(&otherOutput, &type), VFW_E_ALREADY_CONNECTED);
    EXPECT_TRUE(output.script.calls.empty()); // the connection that stands is not touched
    EXPECT_TRUE(input.script.calls.empty());
    EXPECT_EQ(otherOutput.Connect(&input, &type), VFW_E_ALREADY_CONNECTED);
    EXPECT_FALSE(otherOutput.IsConnected());
    EXPECT_EQ(output.GetConnected(), static_cast<IPin*>(&input));
}

TEST_F(ConnectionTest, ActiveFilterNeitherConnectsNorDisconnects) {
    const CMediaType type = TypeWithTag(1);
    ASSERT_EQ(source->Pause(), S_OK);
    EXPECT_EQ(output.Connect(&input, &type), VFW_E_NOT_STOPPED);
    ASSERT_EQ(target->Pause(), S_OK);
    EXPECT_EQ(input.ReceiveConnection(&output, &type), VFW_E_NOT_STOPPED);
    source->Stop();
    EXPECT_EQ(output.Connect(&input, &type), VFW_E_NOT_STOPPED); // the answer of the other pin
    target->Stop();
    ASSERT_EQ(Connect(type), S_OK);
    ASSERT_EQ(source->Pause(), S_OK);
    EXPECT_EQ(output.Disconnect(), VFW_E_NOT_STOPPED);
    EXPECT_TRUE(output.IsConnected());
}

TEST_F(ConnectionTest, PinThatAllowsItConnectsWhileActive) {
    ASSERT_EQ(source->Pause(), S_OK);
    EXPECT_FALSE(output.CanReconnectWhenActive());
    output.SetReconnectWhenActive(true);
    EXPECT_EQ(Connect(TypeWithTag(1)), S_OK);
}

TEST_F(ConnectionTest, PinsOfTheSameDirectionDoNotConnect) {
    const FilterPtr other = MakeFilter();
    TestOutputPin& otherOutput = other->AddOutput();
    TestInputPin& otherInput = other->AddInput();
    const CMediaType type = TypeWithTag(1);
    EXPECT_EQ(output.Connect(&otherOutput, &type), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(input.Connect(&otherInput, &type), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(input.ReceiveConnection(&otherInput, &type), VFW_E_INVALID_DIRECTION);
    EXPECT_EQ(output.ReceiveConnection(&otherOutput, &type), VFW_E_INVALID_DIRECTION);
    EXPECT_FALSE(input.IsConnected());
    EXPECT_FALSE(output.IsConnected());
}

TEST_F(ConnectionTest, NullPointersAreRefused) {
    const CMediaType type = TypeWithTag(1);
    EXPECT_EQ(output.Connect(nullptr, &type), E_POINTER);
    EXPECT_EQ(input.ReceiveConnection(nullptr, &type), E_POINTER);
    EXPECT_EQ(input.ReceiveConnection(&output, nullptr), E_POINTER);
    EXPECT_EQ(input.ConnectedTo(nullptr), E_POINTER);
    EXPECT_EQ(input.ConnectionMediaType(nullptr), E_POINTER);
    EXPECT_EQ(input.QueryPinInfo(nullptr), E_POINTER);
    EXPECT_EQ(input.QueryDirection(nullptr), E_POINTER);
    EXPECT_EQ(input.QueryId(nullptr), E_POINTER);
    EXPECT_EQ(input.QueryAccept(nullptr), E_POINTER);
    EXPECT_EQ(input.EnumMediaTypes(nullptr), E_POINTER);
}

TEST_F(ConnectionTest, RefusedTypeIsTypeNotAccepted) {
    for (const HRESULT refusal : {E_FAIL, E_INVALIDARG, S_FALSE}) {
        output.script.checkMediaType = Only({}, refusal);
        EXPECT_EQ(Connect(TypeWithTag(1)), VFW_E_TYPE_NOT_ACCEPTED);
        output.script.checkMediaType = Only({1});
        input.script.checkMediaType = Only({}, refusal);
        EXPECT_EQ(Connect(TypeWithTag(1)), VFW_E_TYPE_NOT_ACCEPTED);
        input.script.checkMediaType = Only({1});
    }
    EXPECT_FALSE(output.IsConnected());
    EXPECT_FALSE(input.IsConnected());
}

TEST_F(ConnectionTest, RefusalThatSaysMoreIsPassedOn) {
    constexpr HRESULT kBareMinusOne = -1;
    for (const HRESULT refusal : {VFW_E_NO_AUDIO_HARDWARE, kBareMinusOne}) {
        input.script.checkMediaType = Only({}, refusal);
        EXPECT_EQ(Connect(TypeWithTag(1)), refusal);
    }
}

TEST_F(ConnectionTest, EveryFailingHookUndoesTheConnectionOnBothSides) {
    using dshow_test::PinScript;
    constexpr HRESULT kFailure = VFW_E_NO_TRANSPORT;
    for (HRESULT PinScript::*const hook :
         {&PinScript::checkConnect, &PinScript::setMediaType, &PinScript::completeConnect}) {
        for (PinScript* const script : {&output.script, &input.script}) {
            script->*hook = kFailure;
            EXPECT_EQ(Connect(TypeWithTag(1)), kFailure);
            EXPECT_FALSE(output.IsConnected());
            EXPECT_FALSE(input.IsConnected());
            script->*hook = S_OK;
        }
    }
    EXPECT_EQ(Connect(TypeWithTag(1)), S_OK); // and nothing stands in the way of the next try
}

TEST_F(ConnectionTest, HooksAreCalledInOrder) {
    ASSERT_EQ(Connect(TypeWithTag(1)), S_OK);
    EXPECT_EQ(output.script.calls, (HookCalls{"CheckConnect", "CheckMediaType", "SetMediaType", "CompleteConnect"}));
    EXPECT_EQ(input.script.calls, (HookCalls{"CheckConnect", "CheckMediaType", "SetMediaType", "CompleteConnect"}));
}

TEST_F(ConnectionTest, OutputNeedsAPeerWithMemInputPin) {
    // An output pin of our own stands for a peer that is an input by its direction only.
    class Odd : public TestOutputPin {
      public:
        using TestOutputPin::TestOutputPin;
        STDMETHODIMP QueryDirection(PIN_DIRECTION* direction) noexcept override {
            *direction = PINDIR_INPUT;
            return S_OK;
        }
    };
    CCritSec lock;
    HRESULT hr = S_OK;
    Odd odd(OLESTR("odd"), target.Get(), &lock, &hr, OLESTR("Odd"));
    const CMediaType type = TypeWithTag(1);
    EXPECT_EQ(output.Connect(&odd, &type), E_NOINTERFACE);
    EXPECT_FALSE(output.IsConnected());
}

TEST_F(ConnectionTest, ExceptionInAHookBecomesAnHresultAndUndoesTheConnection) {
    input.script.checkMediaType = [](const CMediaType&) -> HRESULT { throw std::bad_alloc(); };
    EXPECT_EQ(Connect(TypeWithTag(1)), E_OUTOFMEMORY);
    output.script.checkMediaType = [](const CMediaType&) -> HRESULT { throw "hook"; };
    EXPECT_EQ(Connect(TypeWithTag(1)), E_UNEXPECTED);
    EXPECT_EQ(output.QueryAccept(&output.CurrentMediaType()), S_FALSE);
    EXPECT_FALSE(output.IsConnected());
    EXPECT_FALSE(input.IsConnected());
}

TEST_F(ConnectionTest, DisconnectBreaksTheConnectionOfOnePin) {
    ASSERT_EQ(Connect(TypeWithTag(1)), S_OK);
    EXPECT_EQ(output.Disconnect(), S_OK);
    EXPECT_FALSE(output.IsConnected());
    EXPECT_TRUE(input.IsConnected()); // the graph disconnects the other one
    EXPECT_EQ(output.Disconnect(), S_FALSE);
    EXPECT_EQ(output.CountCalls("BreakConnect"), 1U);
}

TEST_F(ConnectionTest, PinWhoseBreakConnectFailsStaysConnected) {
    ASSERT_EQ(Connect(TypeWithTag(1)), S_OK);
    output.script.breakConnect = E_ABORT;
    EXPECT_EQ(output.Disconnect(), E_ABORT);
    EXPECT_TRUE(output.IsConnected());
}

// ---- Peers that share no code with the base classes -----------------------------------------------------------

TEST_F(ConnectionTest, ForeignOutputConnectsAndLetsGo) {
    FakeUpstreamPin upstream{MediaTypeValue(TypeWithTag(1))};
    ASSERT_EQ(upstream.ConnectTo(&input), S_OK);
    EXPECT_EQ(input.GetConnected(), static_cast<IPin*>(&upstream));
    EXPECT_EQ(input.Allocator(), static_cast<IMemAllocator*>(&upstream.Allocator()));
    upstream.Unplug();
    EXPECT_FALSE(input.IsConnected());
    EXPECT_EQ(input.Allocator(), nullptr);
    EXPECT_EQ(upstream.References(), 0);
}

TEST_F(ConnectionTest, ForeignInputIsConnectedAndReleased) {
    FakeSinkPin sink;
    const CMediaType type = StreamType();
    ASSERT_EQ(output.Connect(&sink, &type), S_OK);
    EXPECT_EQ(output.GetConnected(), static_cast<IPin*>(&sink));
    sink.Unplug();
    EXPECT_FALSE(output.IsConnected());
    EXPECT_EQ(sink.References(), 0);
}

TEST_F(ConnectionTest, ForeignInputsRefusalLeavesNothingBehind) {
    FakeSinkPin sink;
    sink.RefuseConnection(VFW_E_NO_TRANSPORT);
    const CMediaType type = StreamType();
    EXPECT_EQ(output.Connect(&sink, &type), VFW_E_NO_TRANSPORT);
    EXPECT_FALSE(output.IsConnected());
    EXPECT_EQ(sink.References(), 0);
}

} // namespace
