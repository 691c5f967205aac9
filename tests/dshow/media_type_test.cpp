#include <algorithm>

#include <gtest/gtest.h>

#include "dshow/am_media_type.h"
#include "dshow/media_type.h"
#include "tests/dshow/object_count_test.h"
#include "tests/dshow/test_filter.h"
#include "tests/support/fake_allocator.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

namespace {

using dshow_test::TypeWithTag;

constexpr BYTE kFormat[] = {1, 2, 3, 4, 5};

CMediaType TypeWithFormat() {
    CMediaType type = TypeWithTag(0);
    type.SetFormat(kFormat, sizeof(kFormat));
    return type;
}

TEST(MediaType, FreshTypeHasTheDocumentedDefaults) {
    const CMediaType type;
    EXPECT_EQ(*type.Type(), GUID_NULL);
    EXPECT_EQ(*type.Subtype(), GUID_NULL);
    EXPECT_EQ(*type.FormatType(), GUID_NULL);
    EXPECT_EQ(type.lSampleSize, 1U);
    EXPECT_TRUE(type.IsFixedSize());
    EXPECT_FALSE(type.IsTemporalCompressed());
    EXPECT_EQ(type.FormatLength(), 0U);
    EXPECT_EQ(type.Format(), nullptr);
    EXPECT_EQ(type.pUnk, nullptr);
    EXPECT_FALSE(type.IsValid());
    EXPECT_TRUE(CMediaType(&MEDIATYPE_Audio).IsValid());
}

TEST(MediaType, CopyOwnsItsFormatBlock) {
    const CMediaType original = TypeWithFormat();
    const CMediaType copy(original);
    ASSERT_EQ(copy.FormatLength(), sizeof(kFormat));
    EXPECT_NE(copy.Format(), original.Format());
    EXPECT_TRUE(std::equal(std::begin(kFormat), std::end(kFormat), copy.Format()));
    EXPECT_TRUE(copy == original);
}

TEST(MediaType, CopiesCountTheirUnknown) {
    test_support::FakeAllocator object;
    {
        CMediaType original = TypeWithFormat();
        original.pUnk = &object;
        object.AddRef();
        const CMediaType copy(original);
        EXPECT_EQ(object.References(), 2);
        CMediaType assigned;
        assigned = copy;
        EXPECT_EQ(object.References(), 3);
        assigned = CMediaType();
        EXPECT_EQ(object.References(), 2);
        const CMediaType moved(std::move(original));
        EXPECT_EQ(object.References(), 2);
    }
    EXPECT_EQ(object.References(), 0);
}

TEST(MediaType, AssignmentToItselfKeepsTheBlock) {
    CMediaType type = TypeWithFormat();
    const CMediaType& same = type;
    type = same;
    EXPECT_EQ(type.Set(same), S_OK);
    EXPECT_TRUE(type == TypeWithFormat());
}

TEST(MediaType, FreeFunctionsCopyDeepAndFreeAll) {
    test_support::FakeAllocator object;
    CMediaType original = TypeWithFormat();
    original.pUnk = &object;
    object.AddRef();

    AM_MEDIA_TYPE* const record = CreateMediaType(&original);
    ASSERT_NE(record, nullptr);
    EXPECT_NE(record->pbFormat, original.pbFormat);
    EXPECT_EQ(object.References(), 2);
    DeleteMediaType(record);
    EXPECT_EQ(object.References(), 1);
    DeleteMediaType(nullptr);

    AM_MEDIA_TYPE target;
    ASSERT_EQ(CopyMediaType(&target, &original), S_OK);
    EXPECT_EQ(target.cbFormat, sizeof(kFormat));
    FreeMediaType(target);
    EXPECT_EQ(target.cbFormat, 0U);
    EXPECT_EQ(target.pbFormat, nullptr);
    EXPECT_EQ(target.pUnk, nullptr);
    EXPECT_EQ(CopyMediaType(nullptr, &original), E_POINTER);
    EXPECT_EQ(CopyMediaType(&target, nullptr), E_POINTER);
    EXPECT_EQ(CreateMediaType(nullptr), nullptr);
}

TEST(MediaType, LengthWithoutABlockIsNoBlock) {
    AM_MEDIA_TYPE lying{};
    lying.cbFormat = 100;
    const CMediaType copy(lying);
    EXPECT_EQ(copy.FormatLength(), 0U);
    EXPECT_EQ(copy.Format(), nullptr);

    BYTE unused = 0;
    lying.cbFormat = 0;
    lying.pbFormat = &unused;
    EXPECT_EQ(CMediaType(lying).Format(), nullptr);
}

TEST(MediaType, EqualityComparesTypesAndFormatBlock) {
    const CMediaType type = TypeWithFormat();
    CMediaType other = type;
    other.SetSampleSize(77); // no part of the identity
    EXPECT_TRUE(type == other);
    EXPECT_FALSE(type != other);
    other.Format()[4] ^= 1;
    EXPECT_TRUE(type != other);
    other = type;
    other.SetFormat(kFormat, 4);
    EXPECT_TRUE(type != other);
    other = type;
    other.SetType(&MEDIATYPE_Audio);
    EXPECT_TRUE(type != other);
    other = type;
    other.SetSubtype(&MEDIASUBTYPE_RGB32);
    EXPECT_TRUE(type != other);
    other = type;
    other.SetFormatType(&FORMAT_VideoInfo2);
    EXPECT_TRUE(type != other);
}

TEST(MediaType, PartialTypeIsMatchedByAllItLeavesOpen) {
    const CMediaType type = TypeWithFormat();
    CMediaType partial;
    EXPECT_TRUE(partial.IsPartiallySpecified());
    EXPECT_TRUE(type.MatchesPartial(&partial));
    partial.SetType(&MEDIATYPE_Video);
    EXPECT_TRUE(partial.IsPartiallySpecified()); // the format is open still
    EXPECT_TRUE(type.MatchesPartial(&partial));
    partial.SetSubtype(&MEDIASUBTYPE_RGB32);
    EXPECT_FALSE(type.MatchesPartial(&partial));
    partial.SetSubtype(&GUID_NULL);
    partial.SetFormatType(&FORMAT_VideoInfo);
    EXPECT_FALSE(partial.IsPartiallySpecified()); // an open subtype does not count
    EXPECT_FALSE(type.MatchesPartial(&partial));  // a format type brings its block into play
    partial.SetFormat(kFormat, sizeof(kFormat));
    EXPECT_TRUE(type.MatchesPartial(&partial));
    partial.SetType(&MEDIATYPE_Audio);
    EXPECT_FALSE(type.MatchesPartial(&partial));
    partial.SetType(&GUID_NULL);
    EXPECT_TRUE(partial.IsPartiallySpecified());
}

TEST(MediaType, SampleSizeZeroStandsForVariable) {
    CMediaType type;
    type.SetSampleSize(0);
    EXPECT_FALSE(type.IsFixedSize());
    EXPECT_EQ(type.GetSampleSize(), 0U);
    EXPECT_EQ(type.lSampleSize, 1U);
    type.SetSampleSize(4096);
    EXPECT_TRUE(type.IsFixedSize());
    EXPECT_EQ(type.GetSampleSize(), 4096U);
    type.SetVariableSize();
    EXPECT_EQ(type.GetSampleSize(), 0U);
    type.SetTemporalCompression(TRUE);
    EXPECT_TRUE(type.IsTemporalCompressed());
}

TEST(MediaType, FormatBufferGrowsAndShrinksWithItsContent) {
    CMediaType type = TypeWithFormat();
    ASSERT_NE(type.ReallocFormatBuffer(8), nullptr);
    EXPECT_EQ(type.FormatLength(), 8U);
    EXPECT_TRUE(std::equal(std::begin(kFormat), std::end(kFormat), type.Format()));
    ASSERT_NE(type.ReallocFormatBuffer(2), nullptr);
    EXPECT_EQ(type.FormatLength(), 2U);
    EXPECT_EQ(type.Format()[1], 2);
    EXPECT_EQ(type.ReallocFormatBuffer(2), type.Format());
    EXPECT_EQ(type.AllocFormatBuffer(2), type.Format());
    ASSERT_NE(type.AllocFormatBuffer(3), nullptr);
    EXPECT_EQ(type.FormatLength(), 3U);
    EXPECT_TRUE(type.SetFormat(nullptr, 0));
    EXPECT_EQ(type.Format(), nullptr);
    ASSERT_NE(type.ReallocFormatBuffer(4), nullptr);
    EXPECT_EQ(type.ReallocFormatBuffer(0), nullptr);
    EXPECT_EQ(type.FormatLength(), 0U);
}

TEST(MediaType, InitMediaTypeFreesWhatTheTypeHeld) {
    test_support::FakeAllocator object;
    CMediaType type = TypeWithFormat();
    type.pUnk = &object;
    object.AddRef();
    type.InitMediaType();
    EXPECT_EQ(object.References(), 0);
    EXPECT_TRUE(type == CMediaType());
    EXPECT_EQ(type.lSampleSize, 1U);
}

#ifdef QRX_NATIVE
TEST(MediaType, LackOfMemoryLeavesTheTypeUnchanged) {
    const CMediaType other = TypeWithFormat();
    CMediaType type = TypeWithTag(9);
    const native::ScopedAllocationFailure noMemory(1, true);
    EXPECT_EQ(type.Set(other), E_OUTOFMEMORY);
    EXPECT_EQ(dshow_test::TagOf(type), 9);
    EXPECT_FALSE(type.SetFormat(kFormat, sizeof(kFormat)));
    EXPECT_EQ(type.ReallocFormatBuffer(100), nullptr);
    EXPECT_EQ(dshow_test::TagOf(type), 9);
    HRESULT hr = S_OK;
    const CMediaType copy(other, &hr);
    EXPECT_EQ(hr, E_OUTOFMEMORY);
    EXPECT_EQ(copy.FormatLength(), 0U);
    EXPECT_THROW(CMediaType{other}, std::bad_alloc);
    EXPECT_EQ(CreateMediaType(&other), nullptr);
}

TEST(MediaType, RecordIsFreedWhenItsFormatBlockCannotBeHad) {
    const CMediaType type = TypeWithFormat();
    const native::ScopedAllocationFailure secondFails(2);
    EXPECT_EQ(CreateMediaType(&type), nullptr); // the leak check sees the record if it stays
}
#endif

} // namespace
