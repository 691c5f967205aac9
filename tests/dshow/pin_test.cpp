#include <gtest/gtest.h>

#include "tests/dshow/connection_fixture.h"

namespace {

using dshow_test::TestInputPin;
using dshow_test::TypeWithTag;
using win::ComPtr;

// What a pin says of itself, and who keeps it alive.
class PinTest : public dshow_test::ConnectionTest {};

TEST_F(PinTest, PinTellsItsNameDirectionAndFilter) {
    PIN_INFO info{};
    ASSERT_EQ(output.QueryPinInfo(&info), S_OK);
    EXPECT_EQ(WideString(info.achName), OLESTR("Out"));
    EXPECT_EQ(info.dir, PINDIR_OUTPUT);
    EXPECT_EQ(info.pFilter, static_cast<IBaseFilter*>(source.Get()));
    info.pFilter->Release();

    LPWSTR id = nullptr;
    ASSERT_EQ(output.QueryId(&id), S_OK);
    EXPECT_EQ(WideString(id), OLESTR("Out"));
    CoTaskMemFree(id);

    PIN_DIRECTION direction = PINDIR_INPUT;
    EXPECT_EQ(output.QueryDirection(&direction), S_OK);
    EXPECT_EQ(direction, PINDIR_OUTPUT);
    ULONG count = 1;
    EXPECT_EQ(output.QueryInternalConnections(nullptr, &count), E_NOTIMPL);
}

TEST_F(PinTest, LongPinNameIsCutInTheFixedRecord) {
    const WideString name(300, 'x');
    TestInputPin& pin = target->AddInput(name.c_str());
    PIN_INFO info{};
    ASSERT_EQ(pin.QueryPinInfo(&info), S_OK);
    info.pFilter->Release();
    EXPECT_EQ(WideString(info.achName), WideString(MAX_PIN_NAME - 1, 'x'));
    LPWSTR id = nullptr;
    ASSERT_EQ(pin.QueryId(&id), S_OK);
    EXPECT_EQ(WideString(id), name); // FindPin compares the whole name
    CoTaskMemFree(id);
}

TEST_F(PinTest, QueryAcceptAnswersTrueOrFalse) {
    input.script.checkMediaType = Only({1}, -1);
    const CMediaType good = TypeWithTag(1);
    const CMediaType bad = TypeWithTag(2);
    EXPECT_EQ(input.QueryAccept(&good), S_OK);
    EXPECT_EQ(input.QueryAccept(&bad), S_FALSE);
    AM_MEDIA_TYPE lying{};
    lying.cbFormat = 1000; // and no block
    EXPECT_EQ(input.QueryAccept(&lying), S_FALSE);
}

TEST_F(PinTest, ReferencesOnAPinAreReferencesOnItsFilter) {
    EXPECT_EQ(static_cast<IPin&>(input).AddRef(), 2U);
    EXPECT_EQ(target->AddRef(), 3U);
    EXPECT_EQ(static_cast<IPin&>(input).Release(), 2U);
    EXPECT_EQ(target->Release(), 1U);
    EXPECT_EQ(static_cast<CUnknown&>(input).GetOwner()->AddRef(), 2U);
    EXPECT_EQ(static_cast<CUnknown&>(input).GetOwner()->Release(), 1U);
}

TEST_F(PinTest, ConnectionHoldsOneReferenceOnEachPeer) {
    ASSERT_EQ(Connect(TypeWithTag(1)), S_OK);
    // The input is held twice: as the peer, and as its IMemInputPin.
    EXPECT_EQ(target->AddRef(), 4U);
    EXPECT_EQ(target->Release(), 3U);
    EXPECT_EQ(source->AddRef(), 3U);
    EXPECT_EQ(source->Release(), 2U);
}

TEST_F(PinTest, PinInterfacesAreFound) {
    ComPtr<IUnknown> object;
    EXPECT_EQ(input.QueryInterface(IID_IPin, object.PutVoid()), S_OK);
    EXPECT_EQ(input.QueryInterface(IID_IMemInputPin, object.PutVoid()), S_OK);
    EXPECT_EQ(input.QueryInterface(IID_IQualityControl, object.PutVoid()), S_OK);
    EXPECT_EQ(output.QueryInterface(IID_IMemInputPin, object.PutVoid()), E_NOINTERFACE);
    EXPECT_FALSE(object);
}

TEST_F(PinTest, NewSegmentIsRemembered) {
    EXPECT_EQ(input.CurrentRate(), 1.0);
    ASSERT_EQ(input.NewSegment(100, 900, 2.0), S_OK);
    EXPECT_EQ(input.CurrentStartTime(), 100);
    EXPECT_EQ(input.CurrentStopTime(), 900);
    EXPECT_EQ(input.CurrentRate(), 2.0);
}

} // namespace
