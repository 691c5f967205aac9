#include "sources/base/packet_allocator.h"

#include <cstdint>
#include <string_view>
#include <thread>

#include <gtest/gtest.h>

#include "dshow/am_media_type.h"
#include "win/com_ptr.h"

namespace source {
namespace {

constexpr ALLOCATOR_PROPERTIES kTwoOfTen{2, 10, 1, 0};

class PacketAllocatorTest : public testing::Test {
  protected:
    HRESULT Ask(ALLOCATOR_PROPERTIES request) { return m_allocator->SetProperties(&request, &m_actual); }
    win::ComPtr<IMediaSample> TakeOne(DWORD flags = AM_GBF_NOWAIT) {
        win::ComPtr<IMediaSample> sample;
        m_answer = m_allocator->GetBuffer(sample.Put(), nullptr, nullptr, flags);
        return sample;
    }
    void SetUp() override {
        ASSERT_EQ(Ask(kTwoOfTen), S_OK);
        ASSERT_EQ(m_allocator->Commit(), S_OK);
    }

    win::ComPtr<CPacketAllocator> m_allocator{new CPacketAllocator};
    ALLOCATOR_PROPERTIES m_actual{};
    HRESULT m_answer = S_OK;
};

TEST_F(PacketAllocatorTest, GrantsWhatItIsAskedForAndNothingWhileCommitted) {
    EXPECT_EQ(m_actual.cBuffers, 2);
    EXPECT_EQ(m_actual.cbBuffer, 10);
    EXPECT_EQ(Ask({3, 20, 1, 0}), VFW_E_ALREADY_COMMITTED);
    ASSERT_EQ(m_allocator->Decommit(), S_OK);
    EXPECT_EQ(Ask({3, 20, 8, 0}), S_OK);
    ALLOCATOR_PROPERTIES now{};
    ASSERT_EQ(m_allocator->GetProperties(&now), S_OK);
    EXPECT_EQ(now.cBuffers, 3);
    EXPECT_EQ(now.cbBuffer, 20);
    EXPECT_EQ(now.cbAlign, 8);
    ASSERT_EQ(m_allocator->Commit(), S_OK);
    EXPECT_EQ(m_allocator->Commit(), S_OK);
    const win::ComPtr<IMediaSample> samples[] = {TakeOne(), TakeOne(), TakeOne()};
    EXPECT_EQ(samples[2]->GetSize(), 20);
    TakeOne();
    EXPECT_EQ(m_answer, VFW_E_TIMEOUT);
}

TEST_F(PacketAllocatorTest, RefusesPropertiesThatItCannotKeep) {
    ASSERT_EQ(m_allocator->Decommit(), S_OK);
    EXPECT_EQ(Ask({2, 10, 1, 8}), VFW_E_BADALIGN);
    EXPECT_EQ(Ask({2, 10, 4096, 0}), VFW_E_BADALIGN);
    EXPECT_EQ(Ask({2, 10, 3, 0}), VFW_E_BADALIGN);
    EXPECT_EQ(Ask({2, 10, 0, 0}), VFW_E_BADALIGN);
    EXPECT_EQ(Ask({0, 10, 1, 0}), E_INVALIDARG);
    EXPECT_EQ(Ask({2, 0, 1, 0}), E_INVALIDARG);
    EXPECT_EQ(m_allocator->SetProperties(nullptr, &m_actual), E_POINTER);
    EXPECT_EQ(m_allocator->GetProperties(nullptr), E_POINTER);
    EXPECT_EQ(m_allocator->GetBuffer(nullptr, nullptr, nullptr, 0), E_POINTER);
    EXPECT_EQ(win::ComPtr<CPacketAllocator>(new CPacketAllocator)->Commit(), VFW_E_SIZENOTSET);
    EXPECT_EQ(Ask({2, 10, __STDCPP_DEFAULT_NEW_ALIGNMENT__, 0}), S_OK);
}

TEST_F(PacketAllocatorTest, GivesNoMoreBuffersThanWereAgreedOnAndThoseAgainThatCameBack) {
    const win::ComPtr<IMediaSample> first = TakeOne();
    win::ComPtr<IMediaSample> second = TakeOne();
    ASSERT_TRUE(first && second);
    EXPECT_FALSE(TakeOne());
    EXPECT_EQ(m_answer, VFW_E_TIMEOUT);
    second->SetDiscontinuity(TRUE);
    second->SetPreroll(TRUE);
    second->SetSyncPoint(TRUE);
    REFERENCE_TIME time = 5;
    second->SetTime(&time, &time);
    second->SetMediaTime(&time, &time);
    second->SetActualDataLength(1);
    AM_MEDIA_TYPE type{};
    second->SetMediaType(&type);
    second.Reset();
    const win::ComPtr<IMediaSample> again = TakeOne();
    ASSERT_TRUE(again);
    EXPECT_EQ(again->GetActualDataLength(), 10);
    EXPECT_EQ(again->GetTime(&time, &time), VFW_E_SAMPLE_TIME_NOT_SET);
    EXPECT_EQ(again->GetMediaTime(&time, &time), VFW_E_MEDIA_TIME_NOT_SET);
    EXPECT_EQ(again->IsSyncPoint(), S_FALSE);
    EXPECT_EQ(again->IsDiscontinuity(), S_FALSE);
    EXPECT_EQ(again->IsPreroll(), S_FALSE);
    AM_MEDIA_TYPE* none = &type;
    EXPECT_EQ(again->GetMediaType(&none), S_FALSE);
    EXPECT_EQ(none, nullptr);
}

TEST_F(PacketAllocatorTest, WhoWaitsForABufferGetsTheOneThatComesBack) {
    win::ComPtr<IMediaSample> first = TakeOne();
    const win::ComPtr<IMediaSample> second = TakeOne();
    IMediaSample* const expected = first.Get();
    win::ComPtr<IMediaSample> third;
    std::thread waiter([&] { third = TakeOne(0); });
    first.Reset();
    waiter.join();
    EXPECT_EQ(third.Get(), expected);
}

TEST_F(PacketAllocatorTest, DecommitFreesWhoWaitsAndGivesNoMore) {
    const win::ComPtr<IMediaSample> first = TakeOne();
    const win::ComPtr<IMediaSample> second = TakeOne();
    HRESULT answer = S_OK;
    std::thread waiter([&] {
        IMediaSample* third = nullptr;
        answer = m_allocator->GetBuffer(&third, nullptr, nullptr, 0);
    });
    ASSERT_EQ(m_allocator->Decommit(), S_OK);
    waiter.join();
    EXPECT_EQ(answer, VFW_E_NOT_COMMITTED);
    TakeOne();
    EXPECT_EQ(m_answer, VFW_E_NOT_COMMITTED);
}

TEST_F(PacketAllocatorTest, BuffersThatAreOutStayGoodAndHinderOtherPropertiesUntilTheyAreBack) {
    win::ComPtr<IMediaSample> kept = TakeOne();
    BYTE* bytes = nullptr;
    ASSERT_EQ(kept->GetPointer(&bytes), S_OK);
    bytes[9] = 7;
    ASSERT_EQ(m_allocator->Decommit(), S_OK);
    EXPECT_EQ(Ask({2, 20, 1, 0}), VFW_E_BUFFERS_OUTSTANDING);
    EXPECT_EQ(bytes[9], 7);
    kept.Reset();
    EXPECT_EQ(Ask({2, 20, 1, 0}), S_OK);
}

TEST_F(PacketAllocatorTest, ACommitBeforeTheLastBufferIsBackGoesOnWithAllOfThem) {
    const win::ComPtr<IMediaSample> kept = TakeOne();
    ASSERT_EQ(m_allocator->Decommit(), S_OK);
    ASSERT_EQ(m_allocator->Commit(), S_OK);
    const win::ComPtr<IMediaSample> other = TakeOne();
    EXPECT_TRUE(other);
    EXPECT_NE(other.Get(), kept.Get());
    EXPECT_FALSE(TakeOne());
}

TEST_F(PacketAllocatorTest, ASampleThatIsKeptKeepsTheAllocator) {
    win::ComPtr<IMediaSample> kept = TakeOne();
    m_allocator->Decommit();
    m_allocator.Reset();
    BYTE* bytes = nullptr;
    ASSERT_EQ(kept->GetPointer(&bytes), S_OK);
    bytes[0] = 1;
    kept.Reset(); // the sanitizers see what stays behind
}

TEST_F(PacketAllocatorTest, OneWhoGivesASampleBackByHandIsRefused) {
    const win::ComPtr<IMediaSample> sample = TakeOne();
    EXPECT_EQ(m_allocator->ReleaseBuffer(sample.Get()), E_UNEXPECTED);
    EXPECT_TRUE(TakeOne());
    EXPECT_EQ(m_answer, S_OK);
}

TEST_F(PacketAllocatorTest, AnExchangeMovesThePacketsBytesAndNoneIsCopied) {
    std::vector<BYTE> packet{1, 2, 3};
    const BYTE* const place = packet.data();
    PacketSample* sample = nullptr;
    ASSERT_EQ(m_allocator->GetSample(&sample), S_OK);
    sample->Exchange(packet);
    BYTE* bytes = nullptr;
    ASSERT_EQ(sample->GetPointer(&bytes), S_OK);
    EXPECT_EQ(bytes, place);
    EXPECT_EQ(sample->GetSize(), 3);
    EXPECT_EQ(sample->SetActualDataLength(4), VFW_E_BUFFER_OVERFLOW);
    EXPECT_EQ(sample->SetActualDataLength(3), S_OK);
    sample->Release();
    ASSERT_EQ(m_allocator->GetSample(&sample), S_OK);
    EXPECT_EQ(sample->GetSize(), 10); // as agreed on, whatever was in there before
    std::vector<BYTE> next{4, 5};
    sample->Exchange(next);
    EXPECT_EQ(next.data(), place);
    std::vector<BYTE> nothing;
    sample->Exchange(nothing);
    EXPECT_TRUE(nothing.empty());
    ASSERT_EQ(sample->GetPointer(&bytes), S_OK);
    EXPECT_NE(bytes, nullptr);
    sample->Release();
}

TEST_F(PacketAllocatorTest, ASampleAnswersAsItsDocumentationSays) {
    const win::ComPtr<IMediaSample> sample = TakeOne();
    REFERENCE_TIME start = 5;
    REFERENCE_TIME stop = 9;
    EXPECT_EQ(sample->SetTime(&start, nullptr), S_OK);
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_S_NO_STOP_TIME);
    EXPECT_EQ(start, 5);
    EXPECT_EQ(stop, 6);
    stop = 9;
    EXPECT_EQ(sample->SetTime(&start, &stop), S_OK);
    start = stop = 0;
    EXPECT_EQ(sample->GetTime(&start, &stop), S_OK);
    EXPECT_EQ(start, 5);
    EXPECT_EQ(stop, 9);
    EXPECT_EQ(sample->SetTime(nullptr, nullptr), S_OK);
    EXPECT_EQ(sample->GetTime(&start, &stop), VFW_E_SAMPLE_TIME_NOT_SET);
    LONGLONG media = 7;
    EXPECT_EQ(sample->SetMediaTime(&media, &media), S_OK);
    EXPECT_EQ(sample->GetMediaTime(&start, &stop), S_OK);
    EXPECT_EQ(stop, 7);
    EXPECT_EQ(sample->SetMediaTime(&media, nullptr), E_POINTER);
    EXPECT_EQ(sample->SetActualDataLength(-1), VFW_E_BUFFER_OVERFLOW);
    EXPECT_EQ(sample->SetActualDataLength(11), VFW_E_BUFFER_OVERFLOW);
    CMediaType type(&MEDIATYPE_Audio);
    EXPECT_EQ(sample->SetMediaType(&type), S_OK);
    AM_MEDIA_TYPE* got = nullptr;
    ASSERT_EQ(sample->GetMediaType(&got), S_OK);
    EXPECT_EQ(got->majortype, MEDIATYPE_Audio);
    DeleteMediaType(got);
    EXPECT_EQ(sample->SetMediaType(nullptr), S_OK);
    EXPECT_EQ(sample->GetMediaType(&got), S_FALSE);
    EXPECT_EQ(sample->GetPointer(nullptr), E_POINTER);
    EXPECT_EQ(sample->GetTime(nullptr, &stop), E_POINTER);
}

TEST_F(PacketAllocatorTest, BothOfferTheirInterfacesAndNoOther) {
    EXPECT_TRUE(m_allocator.Query<IMemAllocator>(IID_IMemAllocator));
    EXPECT_TRUE(m_allocator.Query<IUnknown>(IID_IUnknown));
    EXPECT_FALSE(m_allocator.Query<IUnknown>(IID_IMediaSample));
    const win::ComPtr<IMediaSample> sample = TakeOne();
    EXPECT_TRUE(sample.Query<IMediaSample>(IID_IMediaSample));
    EXPECT_TRUE(sample.Query<IUnknown>(IID_IUnknown));
    EXPECT_FALSE(sample.Query<IUnknown>(IID_IMemAllocator));
    EXPECT_EQ(sample->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

} // namespace
} // namespace source
