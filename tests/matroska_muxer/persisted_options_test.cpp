// The block of options in a persisted stream: exact bytes, who reads it, and what damaged ones do.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/matroska_muxer/golden_configuration.h"
#include "tests/matroska_muxer/muxer_rig.h"
#include "win/bstr.h"

using namespace test_support;
using golden::Bytes;
using golden::Golden;

namespace {

constexpr HRESULT kEndOfStream = static_cast<HRESULT>(0x80070026); // HRESULT_FROM_WIN32(ERROR_HANDLE_EOF)

// ---- The block, written out by hand ---------------------------------------------------------------------------------

Golden Field(UINT32 tag, const Bytes& value) {
    return Golden().Number(tag, 4).Number(value.size(), 4).Append(value);
}

Bytes Profile(UINT64 profile = 1, size_t size = 4) {
    return Field(1, Golden().Number(profile, size).Get()).Get();
}

Bytes Title(const char* title) {
    return Field(2, Golden().Text(title).Get()).Get();
}

Bytes Seed(UINT64 seed) {
    return Field(3, Golden().Number(seed, 8).Get()).Get();
}

Bytes Statistics(UINT64 statistics, size_t size = 1) {
    return Field(4, Golden().Number(statistics, size).Get()).Get();
}

Bytes Flags(UINT32 index, const Bytes& flags) {
    return Field(5, Golden().Number(index, 4).Append(flags).Get()).Get();
}

Golden Text(const char* text) {
    return Golden().Number(std::char_traits<char>::length(text), 4).Text(text);
}

Bytes ChapterOf(UINT32 level, const char* title, UINT64 start = 5, BYTE hidden = 1) {
    Golden value;
    value.Number(level, 4)
        .Number(start, 8)
        .Number(0xffffffffffffffffULL, 8)
        .Number(77, 8)
        .Number(hidden, 1)
        .Number(0, 1);
    return Field(7, value.Append(Text(title).Get()).Append(Text("de").Get()).Get()).Get();
}

Bytes TagOf(UINT32 level, const char* name) {
    Golden value;
    value.Number(0xffffffff, 4).Number(level, 4).Number(30, 4).Append(Text("SONG").Get()).Append(Text(name).Get());
    return Field(8, value.Append(Text("X").Get()).Append(Text("").Get()).Get()).Get();
}

Bytes ReserveIndex(UINT64 bytes, UINT64 length) {
    return Field(6, Golden().Number(bytes, 8).Number(length, 8).Get()).Get();
}

Bytes Joined(std::initializer_list<Bytes> parts) {
    Golden joined;
    for (const Bytes& part : parts) {
        joined.Append(part);
    }
    return joined.Get();
}

Bytes BlockOf(const Bytes& fields) {
    return Golden().Raw("QRXO").Number(1, 4).Number(fields.size(), 4).Append(fields).Get();
}

Bytes WithBlock(const Bytes& block) {
    return Golden().HeaderOfOptions().Append(golden::FreshBody()).Append(block).Get();
}

Bytes WithFields(const Bytes& fields) {
    return WithBlock(BlockOf(fields));
}

Bytes EveryField() {
    return Joined({Profile(), Title("A film"), Seed(0x0123456789abcdefULL), Statistics(0), ReserveIndex(5000, 70000000),
                   Flags(2, {1, 0xff, 0xff, 0, 0xff}), Flags(99, {0xff, 1, 1, 1, 1})});
}

class PersistedOptions : public ::testing::Test {
  protected:
    Bytes Saved() {
        MemoryStream stream;
        EXPECT_EQ(S_OK, m_rig.Config()->Save(&stream, TRUE));
        return stream.Bytes();
    }
    HRESULT LoadBytes(const Bytes& bytes) {
        MemoryStream stream;
        stream.SetBytes(bytes);
        return m_rig.Config()->Load(&stream);
    }
    // The stream's position is behind what belongs to the filter, and the foreign bytes there are untouched.
    UINT64 PositionAfterLoading(const Bytes& own) {
        MemoryStream stream;
        stream.SetBytes(Golden().Append(own).Raw("bytes of the application").Get());
        EXPECT_EQ(S_OK, m_rig.Config()->Load(&stream));
        ULARGE_INTEGER position{};
        EXPECT_EQ(S_OK, stream.Seek({}, STREAM_SEEK_CUR, &position));
        return position.QuadPart;
    }
    HRESULT Set(const GUID& key, const VARIANT& value) { return m_rig.Config()->SetValue(&key, &value); }
    void SetEverything() {
        VARIANT value{};
        V_UI4(&value) = MuxProfile_Strict;
        EXPECT_EQ(S_OK, Set(MKVMUX_Profile, value));
        V_UI4(&value) = 0;
        EXPECT_EQ(S_OK, Set(MKVMUX_TrackStatistics, value));
        MuxReservedIndex index{5000, 70000000};
        V_BYREF(&value) = &index;
        EXPECT_EQ(S_OK, Set(MKVMUX_ReserveIndex, value));
        V_UI8(&value) = 0x0123456789abcdefULL;
        EXPECT_EQ(S_OK, Set(MKVMUX_Seed, value));
        const win::Bstr title{WideStringView(OLESTR("A film"))};
        V_BSTR(&value) = title.Get();
        EXPECT_EQ(S_OK, Set(MKVMUX_Title, value));
        MuxTrackFlags flags{99, 0xff, 1, 1, 1, 1};
        V_BYREF(&value) = &flags;
        EXPECT_EQ(S_OK, Set(MKVMUX_TrackFlags, value));
        flags = {2, 1, 0xff, 0xff, 0, 0xff};
        EXPECT_EQ(S_OK, Set(MKVMUX_TrackFlags, value));
    }

    MuxerRig m_rig;
};

TEST_F(PersistedOptions, EveryOptionIsAFieldOfTheBlockAndComesBack) {
    SetEverything();
    EXPECT_EQ(WithFields(EveryField()), Saved());
    MuxerRig other;
    MemoryStream stream;
    stream.SetBytes(WithFields(EveryField()));
    ASSERT_EQ(S_OK, other.Config()->Load(&stream));
    EXPECT_EQ(S_FALSE, other.Config()->IsDirty());
    MemoryStream again;
    ASSERT_EQ(S_OK, other.Config()->Save(&again, TRUE));
    EXPECT_EQ(WithFields(EveryField()), again.Bytes());
}

TEST_F(PersistedOptions, EachOptionAloneIsABlockOfOneField) {
    const Bytes fields[] = {ChapterOf(0, "one"),
                            TagOf(0, "ARTIST"),
                            Profile(),
                            Title("x"),
                            Seed(1),
                            Statistics(0),
                            ReserveIndex(1, 0),
                            ReserveIndex(0, 1),
                            Flags(0, {0, 0, 0, 0, 0}),
                            Flags(99, {0xff, 0xff, 0xff, 0xff, 1})};
    for (const Bytes& field : fields) {
        ASSERT_EQ(S_OK, LoadBytes(WithFields(field)));
        EXPECT_EQ(WithFields(field), Saved()) << &field - fields;
    }
}

TEST_F(PersistedOptions, SettingEverythingBackGivesTheStreamOfAFreshFilter) {
    SetEverything();
    ASSERT_EQ(S_OK, LoadBytes(WithFields({})));
    EXPECT_EQ(golden::FreshFilter(), Saved());
    const Bytes defaults =
        Joined({Profile(0), Title(""), Seed(0), Statistics(1), ReserveIndex(0, 0), Flags(0, Bytes(5, 0xff))});
    ASSERT_EQ(S_OK, LoadBytes(WithFields(defaults)));
    EXPECT_EQ(golden::FreshFilter(), Saved());
}

TEST_F(PersistedOptions, AStreamWithoutABlockSetsEverythingToItsDefault) {
    SetEverything();
    ASSERT_EQ(S_OK, LoadBytes(golden::FreshFilter()));
    EXPECT_EQ(golden::FreshFilter(), Saved());
}

TEST_F(PersistedOptions, NothingBehindTheOwnBytesIsRead) {
    EXPECT_EQ(golden::FreshFilter().size(), PositionAfterLoading(golden::FreshFilter()));
    const Bytes whole = WithFields(EveryField());
    EXPECT_EQ(whole.size(), PositionAfterLoading(whole));
    // A block that the header says nothing of is not ours.
    Golden foreign;
    foreign.Append(golden::FreshFilter()).Append(BlockOf(EveryField()));
    ASSERT_EQ(S_OK, LoadBytes(foreign.Get()));
    EXPECT_EQ(golden::FreshFilter(), Saved());
}

TEST_F(PersistedOptions, TheFieldsThatEveryStreamHasStandWhereTheyAlwaysStood) {
    SetEverything();
    const Bytes saved = Saved();
    const Bytes plain = golden::FreshFilter();
    ASSERT_GT(saved.size(), plain.size());
    EXPECT_TRUE(std::equal(plain.begin() + 24, plain.end(), saved.begin() + 24));
}

TEST_F(PersistedOptions, UnknownTagsAreSkippedAndOfTwoTheLaterCounts) {
    const Bytes unknown = Field(0x7fffffff, Bytes(10000, 7)).Get();
    ASSERT_EQ(S_OK, LoadBytes(WithFields(Joined({unknown, Seed(1), Field(1000, {}).Get(), Seed(2), unknown}))));
    EXPECT_EQ(WithFields(Seed(2)), Saved());
}

TEST_F(PersistedOptions, ChaptersAndTagsAreAsManyAsThereAreFields) {
    const Bytes fields = Joined({ChapterOf(0, "one"), ChapterOf(1, "two"), ChapterOf(15, ""), TagOf(0, "ARTIST"),
                                 TagOf(1, "SORT_WITH"), TagOf(0, "ARTIST")});
    ASSERT_EQ(S_OK, LoadBytes(WithFields(fields)));
    EXPECT_EQ(WithFields(fields), Saved());
    ASSERT_EQ(S_OK, LoadBytes(golden::FreshFilter()));
    EXPECT_EQ(golden::FreshFilter(), Saved());
}

TEST_F(PersistedOptions, FlagsOfAnInputWithoutARowAreDropped) {
    ASSERT_EQ(S_OK, LoadBytes(WithFields(Joined({Flags(100, {1, 1, 1, 1, 1}), Flags(99, {1, 1, 1, 1, 1})}))));
    EXPECT_EQ(WithFields(Flags(99, {1, 1, 1, 1, 1})), Saved());
}

// Of each damage: the configuration before it stays, and the error says what it is.
TEST_F(PersistedOptions, ADamagedBlockIsAnErrorThatLeavesTheOptionsAsTheyWere) {
    const Bytes magic = Golden().Raw("QRXo").Number(1, 4).Number(0, 4).Get();
    const Bytes version = Golden().Raw("QRXO").Number(2, 4).Number(0, 4).Get();
    const auto lying = [](UINT64 length, const Bytes& fields) {
        return Golden().Raw("QRXO").Number(1, 4).Number(length, 4).Append(fields).Get();
    };
    const Bytes damaged[] = {
        magic,
        version,
        lying(7, Seed(1)),  // no room for a field's head
        lying(15, Seed(1)), // less than its field
        lying(20, Joined({Seed(1), Seed(2)})),
        BlockOf(Golden().Number(9, 4).Number(0xffffffff, 4).Get()), // an unknown field beyond the block
        BlockOf(Profile(2)),
        BlockOf(Profile(1, 2)),
        BlockOf(Field(2, {'a', 0, 'b'}).Get()), // half a character
        BlockOf(Field(2, {'a', 0, 0, 0}).Get()),
        BlockOf(Field(2, Bytes(65536, 1)).Get()), // a title that is too long
        BlockOf(Field(3, {1, 2, 3, 4}).Get()),
        BlockOf(Statistics(2)),
        BlockOf(Statistics(0, 4)),
        BlockOf(ReserveIndex((UINT64{16} << 20) + 1, 0)),
        BlockOf(ReserveIndex(0, 0x8000000000000000ULL)),
        BlockOf(Field(6, Bytes(8, 1)).Get()),
        BlockOf(Flags(0, {1, 1, 1, 1})),
        BlockOf(Flags(0, {1, 1, 1, 1, 2})),
        BlockOf(ChapterOf(16, "too deep")),
        BlockOf(ChapterOf(0xffffffff, "a further title of none")),
        BlockOf(ChapterOf(0, "a mark", 0xfffffffffffffffeULL)),
        BlockOf(ChapterOf(0, "a flag", 5, 2)),
        BlockOf(Field(7, Bytes(30, 0)).Get()), // less than its fields
        BlockOf(TagOf(1, "of none")),
        BlockOf(TagOf(0, "")),
        BlockOf(Field(8, Golden().Append(Bytes(12, 0)).Number(0xffffffff, 4).Get()).Get()),
        BlockOf(Flags(0xffffffff, {1, 1, 1, 1, 1})),
    };
    SetEverything();
    for (const Bytes& block : damaged) {
        EXPECT_EQ(VFW_E_INVALID_FILE_FORMAT, LoadBytes(WithBlock(block))) << &block - damaged;
    }
    EXPECT_EQ(WithFields(EveryField()), Saved());
}

TEST_F(PersistedOptions, CutAtEveryByteIsAnErrorThatLeavesTheOptionsAsTheyWere) {
    SetEverything();
    const Bytes whole = WithFields(Joined({Seed(5), Flags(1, {0, 0, 0, 0, 0})}));
    for (size_t length = golden::FreshFilter().size(); length < whole.size(); ++length) {
        EXPECT_EQ(kEndOfStream, LoadBytes(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length))))
            << length;
    }
    EXPECT_EQ(WithFields(EveryField()), Saved());
}

// The memory that a length alone could ask for is 4 GiB; the test program of the Linux lane has none of that.
TEST_F(PersistedOptions, LengthsOfGibibytesWithoutBytesEndWithTheStream) {
    const auto endless = [](UINT32 tag) {
        Golden block;
        block.Raw("QRXO").Number(1, 4).Number(0xffffffff, 4).Number(tag, 4).Number(0xfffffff7, 4);
        return WithBlock(block.Raw("some bytes").Get());
    };
    EXPECT_EQ(kEndOfStream, LoadBytes(endless(1000)));
    for (const UINT32 known : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u}) {
        EXPECT_EQ(VFW_E_INVALID_FILE_FORMAT, LoadBytes(endless(known))) << known;
    }
}

TEST_F(PersistedOptions, EveryFailingReadAndWriteIsReturned) {
    SetEverything();
    MemoryStream counted;
    ASSERT_EQ(S_OK, m_rig.Config()->Save(&counted, FALSE));
    const size_t writes = counted.Calls(StreamOperation::Write).size();
    for (UINT64 n = 1; n <= writes; ++n) {
        MemoryStream stream;
        stream.FailNth(StreamOperation::Write, n, STG_E_WRITEFAULT);
        EXPECT_EQ(STG_E_WRITEFAULT, m_rig.Config()->Save(&stream, FALSE));
    }
    MemoryStream read;
    read.SetBytes(counted.Bytes());
    ASSERT_EQ(S_OK, m_rig.Config()->Load(&read));
    const size_t reads = read.Calls(StreamOperation::Read).size();
    for (UINT64 n = reads - 20; n <= reads; ++n) {
        MemoryStream stream;
        stream.SetBytes(counted.Bytes());
        stream.FailNth(StreamOperation::Read, n, STG_E_READFAULT);
        EXPECT_EQ(STG_E_READFAULT, m_rig.Config()->Load(&stream)) << n;
    }
    EXPECT_EQ(counted.Bytes(), Saved());
}

TEST_F(PersistedOptions, RandomDamageIsAnErrorOrAConfigurationNeverACrash) {
    std::mt19937 random(20261122);
    const size_t begin = golden::FreshFilter().size();
    size_t errors = 0;
    for (int i = 0; i < 500; ++i) {
        Bytes bytes = WithFields(EveryField());
        for (int flips = 0; flips < 2; ++flips) {
            bytes[begin + random() % (bytes.size() - begin)] = static_cast<BYTE>(random());
        }
        errors += FAILED(LoadBytes(bytes)) ? 1 : 0;
    }
    EXPECT_GT(errors, 100u);
    EXPECT_LT(errors, 500u);
    ASSERT_EQ(S_OK, LoadBytes(WithFields(EveryField())));
    EXPECT_EQ(WithFields(EveryField()), Saved());
}

} // namespace
