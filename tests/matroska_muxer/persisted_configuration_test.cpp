// The filter's configuration as a persisted stream: exact bytes, and what damaged ones do.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "tests/matroska_muxer/golden_configuration.h"
#include "tests/matroska_muxer/muxer_rig.h"
#include "win/bstr.h"

using namespace test_support;
using golden::Bytes;
using golden::FreshFilter;
using golden::Golden;

namespace {

class PersistedConfiguration : public ::testing::Test {
  protected:
    PersistedConfiguration() {
        EXPECT_EQ(S_OK, m_rig.Filter()->QueryInterface(IID_IPersistStream, m_persist.PutVoid()));
    }

    Bytes Saved() {
        MemoryStream stream;
        EXPECT_EQ(S_OK, m_persist->Save(&stream, TRUE));
        return stream.Bytes();
    }
    HRESULT LoadBytes(const Bytes& bytes) {
        MemoryStream stream;
        stream.SetBytes(bytes);
        return m_persist->Load(&stream);
    }

    MuxerRig m_rig;
    win::ComPtr<IPersistStream> m_persist;
};

// Three rows, webm, and twice as many attachments as it was loaded times: one with all its fields, one with none.
Bytes Configured(UINT32 timesLoaded = 1) {
    Golden golden;
    golden.Header().Number(3, 8);
    golden.Row(0, 1, 1, 0, -1, "French", "main");
    golden.Row(9, 0, 0, 7, 17, "", ""); // an index is kept as it was stored
    golden.Row(2, 1, 0, 0, 2, "German", "x");
    golden.Number(1, 4).Number(2 * timesLoaded, 4);
    for (UINT32 i = 0; i < timesLoaded; ++i) {
        golden.Number(6, 4).Text("a.b").Number(4, 4).Text("de").Number(10, 4).Raw("text/plain").Number(3, 4).Raw("xyz");
        golden.Number(0x0123456789abcdefULL, 8);
        golden.Number(0, 4).Number(0, 4).Number(0, 4).Number(0, 4).Number(2, 8);
    }
    return golden.Get();
}

TEST_F(PersistedConfiguration, AFreshFilterSaves100RowsNoAttachmentAndDocumentType0) {
    EXPECT_EQ(FreshFilter(), Saved());
}

TEST_F(PersistedConfiguration, AConfiguredFilterSavesWhatWasLoadedByteForByte) {
    ASSERT_EQ(S_OK, LoadBytes(Configured()));
    EXPECT_EQ(Configured(), Saved());
}

TEST_F(PersistedConfiguration, LoadingThreeRowsLeavesExactlyThree) {
    ASSERT_EQ(S_OK, LoadBytes(Configured()));
    ASSERT_EQ(3u, m_rig.RowCount());
    EXPECT_EQ(WideString(OLESTR("French")), m_rig.Row(0)->Get().language);
    EXPECT_EQ(9, m_rig.Row(1)->Get().index);
    EXPECT_EQ(17, m_rig.Row(1)->Get().trackType);
    EXPECT_EQ(7, m_rig.Row(1)->Get().bReserved);
    EXPECT_EQ(1u, m_rig.DocType());
    for (int i = 0; i < 4; ++i) {
        ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    }
    EXPECT_TRUE(m_rig.Muxer().IsInputActive(0));
    EXPECT_FALSE(m_rig.Muxer().IsInputActive(1));
    EXPECT_TRUE(m_rig.Muxer().IsInputActive(3)) << "a pin without a row is written";
}

TEST_F(PersistedConfiguration, LoadingReplacesTheRowsAndAddsTheAttachments) {
    ASSERT_EQ(S_OK, LoadBytes(Configured()));
    ASSERT_EQ(S_OK, LoadBytes(Configured()));
    EXPECT_EQ(3u, m_rig.RowCount());
    EXPECT_EQ(Configured(2), Saved());
}

TEST_F(PersistedConfiguration, LoadedAttachmentsReachTheFileAndUnsetFieldsAreLeftOut) {
    namespace id = test_support::ebml_id;
    ASSERT_EQ(S_OK, LoadBytes(Configured()));
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.ConnectOutput());
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, m_rig.Stop());
    const MatroskaLayout layout = m_rig.Layout();
    const EbmlElement* const attachments = layout.Segment()->Child(id::kAttachments);
    ASSERT_NE(nullptr, attachments);
    const auto attached = attachments->Children(id::kAttachedFile);
    ASSERT_EQ(2u, attached.size());
    const EbmlElement& first = *attached[0];
    EXPECT_EQ("a.b", TextOf(layout.file, *first.Child(id::kFileName)));
    EXPECT_EQ("de", TextOf(layout.file, *first.Child(id::kFileDescription)));
    EXPECT_EQ("text/plain", TextOf(layout.file, *first.Child(id::kFileMimeType)));
    EXPECT_EQ("xyz", TextOf(layout.file, *first.Child(id::kFileData)));
    EXPECT_EQ(0x0123456789abcdefULL, UnsignedOf(layout.file, *first.Child(id::kFileUid)));
    const EbmlElement& second = *attached[1];
    ASSERT_EQ(1u, second.children.size());
    EXPECT_EQ(2u, UnsignedOf(layout.file, *second.Child(id::kFileUid)));
}

TEST_F(PersistedConfiguration, AnUnknownDocumentTypeLeavesTheOldOne) {
    ASSERT_EQ(S_OK, LoadBytes(Golden().Header().Number(0, 8).Number(1, 4).Number(0, 4).Get()));
    ASSERT_EQ(S_OK, LoadBytes(Golden().Header().Number(0, 8).Number(2, 4).Number(0, 4).Get()));
    EXPECT_EQ(1u, m_rig.DocType());
}

TEST_F(PersistedConfiguration, SizeMaxIsThatOfTheHeaderAndTheClassIsTheFilters) {
    ULARGE_INTEGER size{};
    EXPECT_EQ(S_OK, m_persist->GetSizeMax(&size));
    EXPECT_EQ(24u, size.QuadPart);
    CLSID clsid{};
    EXPECT_EQ(S_OK, m_persist->GetClassID(&clsid));
    EXPECT_EQ(CLSID_MatroskaMuxer, clsid);
    EXPECT_EQ(S_FALSE, m_persist->IsDirty());
}

TEST_F(PersistedConfiguration, EveryFieldIsOneCallOnTheStream) {
    ASSERT_EQ(S_OK, LoadBytes(Configured()));
    MemoryStream stream;
    ASSERT_EQ(S_OK, m_persist->Save(&stream, FALSE));
    // Header; R; rows of 7 fields plus a text each where one is not empty; type; A; attachments of 5 and their texts.
    const size_t expected = 1 + 1 + (7 + 2) + 7 + (7 + 2) + 1 + 1 + (5 + 4) + 5;
    EXPECT_EQ(expected, stream.Calls(StreamOperation::Write).size());
}

TEST_F(PersistedConfiguration, CutAtEveryByteIsAnErrorThatKeepsWhatWasReadAndTheFilterUsable) {
    const Bytes whole = Configured();
    for (size_t length = 0; length < whole.size(); ++length) {
        SCOPED_TRACE(length);
        EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_HANDLE_EOF),
                  LoadBytes(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length))));
    }
    EXPECT_LE(m_rig.RowCount(), 3u);
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.ConnectOutput());
    EXPECT_EQ(S_OK, m_rig.Pause());
    EXPECT_EQ(S_OK, m_rig.Stop());
}

TEST_F(PersistedConfiguration, ATruncatedRowLeavesTheRowsBeforeIt) {
    const Bytes whole = FreshFilter();
    const size_t twoRows = 24 + 8 + 2 * (11 + 4 + 14 + 4) + 5;
    EXPECT_TRUE(FAILED(LoadBytes(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(twoRows)))));
    EXPECT_EQ(2u, m_rig.RowCount());
}

TEST_F(PersistedConfiguration, EveryFailingReadAndWriteIsReturned) {
    ASSERT_EQ(S_OK, LoadBytes(Configured()));
    MemoryStream counted;
    ASSERT_EQ(S_OK, m_persist->Save(&counted, FALSE));
    const size_t writes = counted.Calls(StreamOperation::Write).size();
    for (UINT64 n = 1; n <= writes; ++n) {
        MemoryStream stream;
        stream.FailNth(StreamOperation::Write, n, STG_E_WRITEFAULT);
        EXPECT_EQ(STG_E_WRITEFAULT, m_persist->Save(&stream, FALSE));
    }
    for (UINT64 n = 1; n <= writes; ++n) {
        MemoryStream stream;
        stream.SetBytes(Configured());
        stream.FailNth(StreamOperation::Read, n, STG_E_READFAULT);
        EXPECT_EQ(STG_E_READFAULT, m_persist->Load(&stream));
    }
}

TEST_F(PersistedConfiguration, FalseLengthsCostNoMoreThanTheBytesThatArrive) {
    const auto truncatedAfter = [](Golden golden) { return golden.Raw("some bytes").Get(); };
    const UINT64 huge = 0xffffffffffffffffULL;
    EXPECT_TRUE(FAILED(LoadBytes(truncatedAfter(Golden().Header().Number(huge, 8)))));
    Golden language;
    language.Header().Number(1, 8).Number(0, 3).Number(0, 4).Number(0, 4).Number(0xffffffff, 4);
    EXPECT_TRUE(FAILED(LoadBytes(truncatedAfter(language))));
    Golden attachments;
    attachments.Header().Number(0, 8).Number(0, 4).Number(0xffffffff, 4);
    EXPECT_TRUE(FAILED(LoadBytes(truncatedAfter(attachments))));
    Golden fileName = attachments;
    fileName.Number(0xfffffffe, 4);
    EXPECT_TRUE(FAILED(LoadBytes(truncatedAfter(fileName))));
    Golden data = attachments;
    data.Number(0, 4).Number(0, 4).Number(0, 4).Number(0xffffffff, 4);
    EXPECT_TRUE(FAILED(LoadBytes(truncatedAfter(data))));
}

TEST_F(PersistedConfiguration, RandomBytesAreAnErrorOrAConfigurationNeverACrash) {
    std::mt19937 random(20261121);
    for (int i = 0; i < 500; ++i) {
        Bytes bytes = Configured();
        for (int flips = 0; flips < 4; ++flips) {
            bytes[24 + random() % (bytes.size() - 24)] = static_cast<BYTE>(random());
        }
        LoadBytes(bytes);
    }
    ASSERT_EQ(S_OK, LoadBytes(FreshFilter()));
    EXPECT_EQ(100u, m_rig.RowCount());
}

TEST_F(PersistedConfiguration, NullStreamsAreRefused) {
    EXPECT_EQ(E_POINTER, m_persist->Load(nullptr));
    EXPECT_EQ(E_POINTER, m_persist->Save(nullptr, TRUE));
    EXPECT_EQ(E_POINTER, m_persist->GetSizeMax(nullptr));
    EXPECT_EQ(E_POINTER, m_persist->GetClassID(nullptr));
}

TEST_F(PersistedConfiguration, SupplementaryCharactersComeBack) {
    const WideString text = OLESTR("\U0001F3AC");
    const win::Bstr name{text};
    m_rig.SetRow({0, 1, 0, 0, nullptr, name.Get(), -1});
    const Bytes saved = Saved();
    m_rig.SetRow({0, 1, 0, 0, nullptr, nullptr, -1});
    ASSERT_EQ(S_OK, LoadBytes(saved));
    EXPECT_EQ(text, m_rig.Row(0)->Get().name);
}

} // namespace
