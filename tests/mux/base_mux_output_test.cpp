// The output pin: its type, its allocator, the stream behind it, and seeking through it.
#include <gtest/gtest.h>

#include "tests/mux/mux_test_fixture.h"
#include "tests/support/fake_allocator.h"
#include "win/com_apartment.h"

namespace {

using test_support::FakeAllocator;
using test_support::FakeSinkPin;
using test_support::StreamOperation;

// {E436EB8E-524F-11CE-9F53-0020AF0BA770}
constexpr GUID kSubtypeNone{0xe436eb8e, 0x524f, 0x11ce, {0x9f, 0x53, 0x00, 0x20, 0xaf, 0x0b, 0xa7, 0x70}};

class BaseMuxOutputTest : public MuxTest {
  protected:
    int Write(const std::vector<BYTE>& bytes) {
        return mux->WriteOutput(bytes.data(), static_cast<INT32>(bytes.size()));
    }
    void StartWithOutput() {
        ConnectVideo();
        ASSERT_EQ(S_OK, ConnectOutput());
        ASSERT_EQ(S_OK, mux->Pause());
        sink.Stream().ClearCalls();
    }
};

TEST_F(BaseMuxOutputTest, OffersOneStreamTypeWhoseFormatTypeIsTheSubtypesValue) {
    CMediaType type;
    ASSERT_EQ(S_OK, mux->GetOutputMediaType(0, &type));
    EXPECT_TRUE(type.majortype == MEDIATYPE_Stream);
    EXPECT_TRUE(type.subtype == kSubtypeNone);
    EXPECT_TRUE(type.formattype == kSubtypeNone);
    EXPECT_FALSE(type.formattype == FORMAT_None);
    EXPECT_EQ(524288u, type.lSampleSize);
    EXPECT_EQ(0u, type.cbFormat);
    EXPECT_EQ(nullptr, type.pbFormat);
    EXPECT_EQ(CMediaType().bTemporalCompression, type.bTemporalCompression);
}

TEST_F(BaseMuxOutputTest, HasNoTypeBeforeOrBehindThatOne) {
    CMediaType type;
    EXPECT_EQ(E_INVALIDARG, mux->GetOutputMediaType(-1, &type));
    EXPECT_EQ(VFW_S_NO_MORE_ITEMS, mux->GetOutputMediaType(1, &type));
    EXPECT_EQ(E_POINTER, mux->GetOutputMediaType(0, nullptr));
    EXPECT_EQ(E_INVALIDARG, mux->OutputPin()->GetMediaType(-1, &type));
}

TEST_F(BaseMuxOutputTest, ConnectsWithAPinThatOffersAStream) {
    EXPECT_EQ(S_OK, ConnectOutput());
    EXPECT_EQ(kSubtypeNone, sink.ConnectedType()->subtype);
}

TEST_F(BaseMuxOutputTest, RefusesAPinWithoutAStream) {
    FakeSinkPin withoutStream(FakeSinkPin::StreamOffer::None);
    EXPECT_EQ(E_FAIL, mux->CompleteOutputConnect(&withoutStream));
    EXPECT_TRUE(FAILED(static_cast<IPin*>(mux->OutputPin())->Connect(&withoutStream, nullptr)));
    EXPECT_FALSE(mux->OutputPin()->IsConnected());
    EXPECT_EQ(E_FAIL, mux->CompleteOutputConnect(nullptr));
}

TEST_F(BaseMuxOutputTest, KeepsNoReferenceOnTheStreamWhileStopped) {
    const LONG before = sink.Stream().References();
    ASSERT_EQ(S_OK, ConnectOutput());
    EXPECT_EQ(before, sink.Stream().References());
    EXPECT_EQ(nullptr, mux->Downstream());
}

TEST_F(BaseMuxOutputTest, HoldsTheStreamExactlyWhileStreaming) {
    StartWithOutput();
    EXPECT_NE(nullptr, mux->Downstream());
    mux->Stop();
    EXPECT_EQ(nullptr, mux->Downstream());
    EXPECT_EQ(0, sink.Stream().References());
}

TEST_F(BaseMuxOutputTest, AsksForOneBufferOfTheTypesSampleSize) {
    ASSERT_EQ(S_OK, ConnectOutput());
    FakeAllocator allocator;
    ALLOCATOR_PROPERTIES request{};
    request.cbPrefix = 5;
    ASSERT_EQ(S_OK, mux->DecideOutputBufferSize(&allocator, &request));
    EXPECT_EQ(1, allocator.Requested().cBuffers);
    EXPECT_EQ(524288, allocator.Requested().cbBuffer);
    EXPECT_EQ(1, allocator.Requested().cbAlign);
    EXPECT_EQ(0, allocator.Requested().cbPrefix);
}

TEST_F(BaseMuxOutputTest, PassesTheAllocatorsFailureOn) {
    ASSERT_EQ(S_OK, ConnectOutput());
    FakeAllocator allocator;
    allocator.FailSetProperties(VFW_E_ALREADY_COMMITTED);
    ALLOCATOR_PROPERTIES request{};
    EXPECT_EQ(VFW_E_ALREADY_COMMITTED, mux->DecideOutputBufferSize(&allocator, &request));
    EXPECT_EQ(E_POINTER, mux->DecideOutputBufferSize(nullptr, &request));
    EXPECT_EQ(E_POINTER, mux->DecideOutputBufferSize(&allocator, nullptr));
}

TEST_F(BaseMuxOutputTest, FailsWhenTheAllocatorGrantsTooLittle) {
    ASSERT_EQ(S_OK, ConnectOutput());
    const ALLOCATOR_PROPERTIES tooLittle[] = {{0, 524288, 1, 0}, {1, 524287, 1, 0}, {1, 524288, 0, 0}};
    for (const auto& granted : tooLittle) {
        FakeAllocator allocator;
        allocator.GrantInstead(granted);
        ALLOCATOR_PROPERTIES request{};
        EXPECT_EQ(E_FAIL, mux->DecideOutputBufferSize(&allocator, &request));
    }
    FakeAllocator generous;
    generous.GrantInstead({9, 600000, 16, 4});
    ALLOCATOR_PROPERTIES request{};
    EXPECT_EQ(S_OK, mux->DecideOutputBufferSize(&generous, &request));
}

TEST_F(BaseMuxOutputTest, WritesEachPieceBehindTheOneBeforeAfterASeekOfItsOwn) {
    StartWithOutput();
    EXPECT_EQ(kMuxOk, Write({1, 2, 3}));
    EXPECT_EQ(kMuxOk, Write({4, 5}));
    const auto calls = sink.Stream().Calls();
    ASSERT_EQ(4u, calls.size());
    EXPECT_EQ(StreamOperation::Seek, calls[0].operation);
    EXPECT_EQ(0, calls[0].move);
    EXPECT_EQ(static_cast<DWORD>(STREAM_SEEK_SET), calls[0].origin);
    EXPECT_EQ(StreamOperation::Write, calls[1].operation);
    EXPECT_EQ(StreamOperation::Seek, calls[2].operation);
    EXPECT_EQ(3, calls[2].move);
    EXPECT_EQ((std::vector<BYTE>{1, 2, 3, 4, 5}), sink.Stream().Bytes());
}

TEST_F(BaseMuxOutputTest, EveryStartWritesFromTheBeginningAgain) {
    StartWithOutput();
    EXPECT_EQ(kMuxOk, Write({1, 2, 3}));
    mux->Stop();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(kMuxOk, Write({9}));
    EXPECT_EQ((std::vector<BYTE>{9, 2, 3}), sink.Stream().Bytes());
}

TEST_F(BaseMuxOutputTest, AFailedSeekLeavesThePositionAndAFailedWriteAdvancesIt) {
    StartWithOutput();
    sink.Stream().FailNth(StreamOperation::Seek, 1, STG_E_SEEKERROR);
    EXPECT_EQ(kMuxFailed, Write({1, 2, 3}));
    sink.Stream().FailNth(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    EXPECT_EQ(kMuxFailed, Write({4, 5}));
    EXPECT_EQ(kMuxOk, Write({6}));
    const auto seeks = sink.Stream().Calls(StreamOperation::Seek);
    ASSERT_EQ(3u, seeks.size());
    EXPECT_EQ(0, seeks[0].move);
    EXPECT_EQ(0, seeks[1].move);
    EXPECT_EQ(2, seeks[2].move);
}

TEST_F(BaseMuxOutputTest, WritesNothingWithoutConnectionStreamOrBytes) {
    EXPECT_EQ(kMuxFailed, Write({1})); // not connected
    ConnectVideo();
    ASSERT_EQ(S_OK, ConnectOutput());
    EXPECT_EQ(kMuxFailed, Write({1})); // not streaming, so no stream is held
    ASSERT_EQ(S_OK, mux->Pause());
    const BYTE byte = 1;
    EXPECT_EQ(kMuxFailed, mux->WriteOutput(&byte, 0));
    EXPECT_EQ(kMuxFailed, mux->WriteOutput(&byte, -1));
    EXPECT_EQ(kMuxFailed, mux->WriteOutput(nullptr, 1));
    EXPECT_TRUE(sink.Stream().Calls().empty());
}

TEST_F(BaseMuxOutputTest, AnswersForNoFurtherInterfaces) {
    win::ComPtr<IMemInputPin> none;
    EXPECT_EQ(E_NOINTERFACE, mux->GetPin(0)->QueryInterface(IID_IMemInputPin, none.PutVoid()));
    win::ComPtr<IPin> pin;
    EXPECT_EQ(S_OK, mux->GetPin(0)->QueryInterface(IID_IPin, pin.PutVoid()));
    EXPECT_EQ(E_POINTER, mux->GetPin(0)->QueryInterface(IID_IMediaSeeking, nullptr));
}

#ifdef QRX_NATIVE
TEST_F(BaseMuxOutputTest, WithoutThePlatformsPassThroughSeekingIsNotOffered) {
    win::ComPtr<IMediaSeeking> seeking;
    EXPECT_TRUE(FAILED(mux->GetPin(0)->QueryInterface(IID_IMediaSeeking, seeking.PutVoid())));
    EXPECT_FALSE(seeking);
}
#else
TEST_F(BaseMuxOutputTest, PassesSeekingAndPositionOnThroughOneObjectOfThePin) {
    const win::ComApartment apartment(CoInitializeEx(nullptr, COINIT_MULTITHREADED));
    {
        win::ComPtr<IMediaSeeking> seeking;
        win::ComPtr<IMediaPosition> position;
        ASSERT_EQ(S_OK, mux->GetPin(0)->QueryInterface(IID_IMediaSeeking, seeking.PutVoid()));
        ASSERT_EQ(S_OK, mux->GetPin(0)->QueryInterface(IID_IMediaPosition, position.PutVoid()));
        // Aggregated: its identity is the pin's.
        win::ComPtr<IUnknown> identity;
        win::ComPtr<IUnknown> pinIdentity;
        ASSERT_EQ(S_OK, seeking->QueryInterface(IID_IUnknown, identity.PutVoid()));
        ASSERT_EQ(S_OK, mux->GetPin(0)->QueryInterface(IID_IUnknown, pinIdentity.PutVoid()));
        EXPECT_EQ(pinIdentity.Get(), identity.Get());
        // In 0 is not connected, so there is nobody to ask.
        LONGLONG duration = 0;
        EXPECT_TRUE(FAILED(seeking->GetDuration(&duration)));
    }
    CloseMuxer();
}
#endif

} // namespace
