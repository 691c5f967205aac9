// The parameters of the filter, set and read as an application does: through IModuleConfig alone.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "log/logger.h"
#include "tests/log/log_directory.h"
#include "tests/matroska_muxer/muxer_rig.h"
#include "win/bstr.h"

using namespace test_support;

namespace {

constexpr GUID kUnknownKey{0x01020304, 0x0506, 0x0708, {9, 10, 11, 12, 13, 14, 15, 16}};

class Parameters : public ::testing::Test {
  protected:
    Parameters() { EXPECT_EQ(S_OK, m_rig.Filter()->QueryInterface(IID_IModuleConfig, m_config.PutVoid())); }

    HRESULT SetRow(const TrackSettings& row) {
        VARIANT value{};
        V_BYREF(&value) = const_cast<TrackSettings*>(&row);
        return m_config->SetValue(&MKVMUX_TrackInfo, &value);
    }
    // The caller frees the record's strings.
    HRESULT GetRow(TrackSettings& row) {
        VARIANT value{};
        V_BYREF(&value) = &row;
        return m_config->GetValue(&MKVMUX_TrackInfo, &value);
    }
    HRESULT SetNumber(const GUID& key, ULONG number) {
        VARIANT value{};
        V_UI4(&value) = number;
        return m_config->SetValue(&key, &value);
    }
    HRESULT Attach(const MuxAttachment& attachment) {
        VARIANT value{};
        V_BYREF(&value) = const_cast<MuxAttachment*>(&attachment);
        return m_config->SetValue(&MKVMUX_Attachment, &value);
    }
    HRESULT SetLogDirectory(BSTR directory) {
        VARIANT value{};
        V_BSTR(&value) = directory;
        return m_config->SetValue(&MKVMUX_LogDirectory, &value);
    }

    [[nodiscard]] bool FileHolds(std::string_view utf8) {
        const std::vector<BYTE> bytes(utf8.begin(), utf8.end());
        const std::vector<BYTE>& file = m_rig.File();
        return std::search(file.begin(), file.end(), bytes.begin(), bytes.end()) != file.end();
    }

    MuxerRig m_rig;
    win::ComPtr<IModuleConfig> m_config;
};

// A record whose strings are freed with it.
struct OwnedRow {
    TrackSettings row{};
    ~OwnedRow() {
        SysFreeString(row.language);
        SysFreeString(row.name);
    }
};

TEST_F(Parameters, ARowIsReplacedByACopyAndReadBackWhole) {
    const WideString text = OLESTR("\U0001F3AC caf\u00e9");
    const win::Bstr name{text};
    const win::Bstr language{WideStringView(OLESTR("French"))};
    ASSERT_EQ(S_OK, SetRow({7, 0, 1, 9, language.Get(), name.Get(), 5}));
    OwnedRow read;
    read.row.index = 7;
    ASSERT_EQ(S_OK, GetRow(read.row));
    EXPECT_EQ(7, read.row.index);
    EXPECT_EQ(0, read.row.bEnabled);
    EXPECT_EQ(1, read.row.bDefault);
    EXPECT_EQ(9, read.row.bReserved);
    EXPECT_EQ(5, read.row.trackType) << "an unconnected pin's stored type is returned";
    EXPECT_EQ(WideString(OLESTR("French")), read.row.language);
    EXPECT_EQ(text, read.row.name);
    EXPECT_NE(name.Get(), read.row.name) << "the strings are duplicated";
}

TEST_F(Parameters, ReadingFreesTheStringsThatTheRecordHeld) {
    OwnedRow read;
    read.row.language = SysAllocString(OLESTR("to be freed")); // the leak checker watches this
    read.row.name = SysAllocString(OLESTR("this too"));
    ASSERT_EQ(S_OK, GetRow(read.row));
    EXPECT_EQ(WideString(OLESTR("English")), read.row.language);
    EXPECT_EQ(0u, SysStringLen(read.row.name));
}

TEST_F(Parameters, NullAndEmptyStringsAreKept) {
    const win::Bstr empty{WideStringView()};
    ASSERT_EQ(S_OK, SetRow({0, 1, 0, 0, nullptr, empty.Get(), -1}));
    OwnedRow read;
    ASSERT_EQ(S_OK, GetRow(read.row));
    EXPECT_EQ(nullptr, read.row.language);
    ASSERT_NE(nullptr, read.row.name);
    EXPECT_EQ(0u, SysStringLen(read.row.name));
}

TEST_F(Parameters, ARowOutOfRangeIsAnInvalidArgumentAndChangesNothing) {
    for (const INT32 index : {-1, 100, 0x7fffffff, static_cast<INT32>(0x80000000)}) {
        EXPECT_EQ(E_INVALIDARG, SetRow({index, 0, 0, 0, nullptr, nullptr, -1}));
        OwnedRow read;
        read.row.index = index;
        EXPECT_EQ(E_INVALIDARG, GetRow(read.row));
        EXPECT_EQ(index, read.row.index);
    }
    EXPECT_EQ(100u, m_rig.RowCount());
    EXPECT_EQ(1, m_rig.Row(99)->Get().bEnabled);
}

TEST_F(Parameters, ARowOutOfRangeIsRefusedBeforeItsStringsAreRead) {
    constexpr UINT32 kNoMemoryForIt = 0xfffffffe; // bytes, as the string's length says
    alignas(8) UINT32 memory[4] = {0, kNoMemoryForIt, 0, 0};
    const BSTR monster = reinterpret_cast<BSTR>(&memory[2]);
    EXPECT_EQ(E_INVALIDARG, SetRow({100, 1, 0, 0, monster, nullptr, -1}));
    EXPECT_EQ(E_OUTOFMEMORY, SetRow({99, 1, 0, 0, monster, nullptr, -1}));
}

TEST_F(Parameters, TheTrackTypeIsThatOfTheConnectedPin) {
    ASSERT_EQ(S_OK, m_rig.ConnectInput(VideoInfoType(MEDIASUBTYPE_RGB24)));
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.ConnectInput(TextType()));
    ASSERT_EQ(S_OK, m_rig.ConnectInput(SubtitleType(mediasubtype::kAss)));
    const std::vector<INT32> expected = {1, 2, 17, 17, -1};
    for (size_t i = 0; i < expected.size(); ++i) {
        OwnedRow read;
        read.row.index = static_cast<INT32>(i);
        ASSERT_EQ(S_OK, GetRow(read.row));
        EXPECT_EQ(expected[i], read.row.trackType);
    }
}

TEST_F(Parameters, DocumentTypesOfTwoAndMoreAreAcceptedAndIgnored) {
    EXPECT_EQ(0u, m_rig.DocType());
    EXPECT_EQ(S_OK, SetNumber(MKVMUX_DocType, 1));
    EXPECT_EQ(1u, m_rig.DocType());
    for (const ULONG value : {ULONG{2}, ULONG{3}, ULONG{0x80000000}, ULONG{0xffffffff}}) {
        EXPECT_EQ(S_OK, SetNumber(MKVMUX_DocType, value));
        EXPECT_EQ(1u, m_rig.DocType());
    }
    EXPECT_EQ(S_OK, SetNumber(MKVMUX_DocType, 0));
    EXPECT_EQ(0u, m_rig.DocType());
}

TEST_F(Parameters, TheDocumentTypeAndTheRowsAreReadWhenStreamingStarts) {
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.ConnectOutput());
    ASSERT_EQ(S_OK, SetNumber(MKVMUX_DocType, 1));
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, SetNumber(MKVMUX_DocType, 0)); // too late for this file
    const win::Bstr name{WideStringView(OLESTR("late"))};
    ASSERT_EQ(S_OK, SetRow({0, 1, 1, 0, nullptr, name.Get(), -1}));
    ASSERT_EQ(S_OK, m_rig.Stop());
    EXPECT_EQ("webm", m_rig.Layout().docType);
    EXPECT_EQ(std::nullopt, m_rig.Layout().tracks.at(0).name);

    m_rig.Sink().Stream().SetBytes({});
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, m_rig.Stop());
    EXPECT_EQ("matroska", m_rig.Layout().docType);
    EXPECT_EQ("late", m_rig.Layout().tracks.at(0).name);
}

TEST_F(Parameters, AnAttachmentGivenWhileRunningIsInTheNextFile) {
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.ConnectOutput());
    ASSERT_EQ(S_OK, m_rig.Pause());
    const win::Bstr fileName{WideStringView(OLESTR("late.txt"))};
    BYTE data[] = {1, 2, 3};
    ASSERT_EQ(S_OK, Attach({fileName.Get(), nullptr, nullptr, sizeof(data), data, 1}));
    ASSERT_EQ(S_OK, m_rig.Stop());
    EXPECT_FALSE(FileHolds("late.txt"));

    m_rig.Sink().Stream().SetBytes({});
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, m_rig.Stop());
    EXPECT_TRUE(FileHolds("late.txt"));
}

TEST_F(Parameters, ALogDirectoryGivenWhileRunningIsInForceAtOnce) {
    LogDirectory directory;
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.ConnectOutput());
    ASSERT_EQ(S_OK, m_rig.Pause());
    const win::Bstr path{directory.Path()};
    ASSERT_EQ(S_OK, SetLogDirectory(path.Get()));
    ASSERT_EQ(S_OK, m_rig.Deliver(0, 0, 10));
    ASSERT_TRUE(m_rig.EndAll());
    ASSERT_EQ(S_OK, m_rig.Stop());
    ASSERT_EQ(S_OK, SetLogDirectory(nullptr));
    const std::string log = ReadWholeFile(directory.Path() + OLESTR("\\QRX_MKVMuxer.log"));
    EXPECT_NE(std::string::npos, log.find("CMkvWriter::WritePacket")) << log;
}

TEST_F(Parameters, InputCountLeavesTheSparePinOut) {
    VARIANT value{};
    ASSERT_EQ(S_OK, m_config->GetValue(&MKVMUX_InputCount, &value));
    EXPECT_EQ(0u, V_UI2(&value));
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_config->GetValue(&MKVMUX_InputCount, &value));
    EXPECT_EQ(2u, V_UI2(&value));
}

TEST_F(Parameters, PositionIsTheLengthWrittenSoFar) {
    VARIANT value{};
    V_I8(&value) = 5;
    ASSERT_EQ(S_OK, m_config->GetValue(&MKVMUX_Position, &value));
    EXPECT_EQ(0, V_I8(&value));
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.ConnectOutput());
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, m_rig.Deliver(0, 0, 1234));
    ASSERT_TRUE(m_rig.EndAll());
    ASSERT_EQ(S_OK, m_config->GetValue(&MKVMUX_Position, &value));
    EXPECT_EQ(12340000, V_I8(&value));
    ASSERT_EQ(S_OK, m_rig.Stop());
}

TEST_F(Parameters, TheVariantsTypeTagIsNeitherCheckedNorSet) {
    VARIANT value{};
    V_VT(&value) = VT_BSTR;
    ASSERT_EQ(S_OK, m_config->GetValue(&MKVMUX_DocType, &value));
    EXPECT_EQ(VT_BSTR, V_VT(&value));
    V_VT(&value) = VT_EMPTY;
    V_UI4(&value) = 1;
    EXPECT_EQ(S_OK, m_config->SetValue(&MKVMUX_DocType, &value));
    EXPECT_EQ(1u, m_rig.DocType());
}

TEST_F(Parameters, UnknownAndOneWayKeysFail) {
    VARIANT value{};
    EXPECT_EQ(E_FAIL, m_config->SetValue(&kUnknownKey, &value));
    EXPECT_EQ(E_FAIL, m_config->SetValue(&MKVMUX_Position, &value));
    EXPECT_EQ(E_FAIL, m_config->SetValue(&MKVMUX_InputCount, &value));
    EXPECT_EQ(E_FAIL, m_config->GetValue(&kUnknownKey, &value));
    EXPECT_EQ(E_FAIL, m_config->GetValue(&MKVMUX_Attachment, &value));
    EXPECT_EQ(E_FAIL, m_config->GetValue(&MKVMUX_LogDirectory, &value));
}

TEST_F(Parameters, NullPointersAreRefused) {
    VARIANT value{};
    EXPECT_EQ(E_POINTER, m_config->SetValue(&MKVMUX_LogDirectory, nullptr));
    EXPECT_EQ(E_POINTER, m_config->SetValue(nullptr, &value));
    EXPECT_EQ(E_POINTER, m_config->GetValue(nullptr, &value));
    EXPECT_EQ(E_POINTER, m_config->GetValue(&MKVMUX_DocType, nullptr));
    EXPECT_EQ(E_POINTER, m_config->SetValue(&MKVMUX_TrackInfo, &value)) << "no record";
    EXPECT_EQ(E_POINTER, m_config->GetValue(&MKVMUX_TrackInfo, &value));
    EXPECT_EQ(E_POINTER, m_config->SetValue(&MKVMUX_Attachment, &value));
}

TEST_F(Parameters, AnEmptyLogDirectorySwitchesTheLogOffWithoutError) {
    LogDirectory directory;
    const win::Bstr path{directory.Path()};
    ASSERT_EQ(S_OK, SetLogDirectory(path.Get()));
    EXPECT_TRUE(g_Logger.IsEnabled());
    const win::Bstr empty{WideStringView()};
    EXPECT_EQ(S_OK, SetLogDirectory(empty.Get()));
    EXPECT_FALSE(g_Logger.IsEnabled());
    const std::string log = ReadWholeFile(directory.Path() + OLESTR("\\QRX_MKVMuxer.log"));
    EXPECT_NE(std::string::npos, log.find("CLogger::CloseLog")) << "the file is closed, not only forgotten";
    EXPECT_EQ(S_OK, SetLogDirectory(nullptr)) << "a null string is an empty one";
}

TEST_F(Parameters, ALogDirectoryThatCannotBeMadeIsNoError) {
    const win::Bstr path{WideStringView(OLESTR("/proc/none/of/this"))};
    EXPECT_EQ(S_OK, SetLogDirectory(path.Get()));
    EXPECT_EQ(S_OK, SetLogDirectory(nullptr));
}

TEST_F(Parameters, AttachmentsReachTheFileAndStayForTheNextOne) {
    const win::Bstr fileName{WideStringView(OLESTR("na\u00efve.ttf"))};
    const win::Bstr description{WideStringView(OLESTR("a font"))};
    std::string mimeType = "application/x-truetype-font";
    std::vector<BYTE> data = {1, 2, 3, 4, 5};
    ASSERT_EQ(S_OK, Attach({fileName.Get(), description.Get(), mimeType.data(), 5, data.data(), 0x123456789abcdefULL}));
    ASSERT_EQ(S_OK, Attach({nullptr, nullptr, nullptr, 0, nullptr, 1})) << "every field may be absent";
    std::fill(data.begin(), data.end(), BYTE{0}); // the filter has its own copy
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.ConnectOutput());
    for (int run = 0; run < 2; ++run) {
        m_rig.Sink().Stream().SetBytes({});
        ASSERT_EQ(S_OK, m_rig.Pause());
        ASSERT_EQ(S_OK, m_rig.Stop());
        const std::vector<BYTE>& file = m_rig.File();
        const std::vector<BYTE> payload = {1, 2, 3, 4, 5};
        EXPECT_NE(file.end(), std::search(file.begin(), file.end(), payload.begin(), payload.end()));
    }
    const MatroskaLayout layout = m_rig.Layout();
    EXPECT_EQ(2u, layout.Segment()->Child(ebml_id::kAttachments)->Children(ebml_id::kAttachedFile).size());
}

// The leak checker of the Linux lane watches the copies; the address checker, that none is freed twice.
TEST_F(Parameters, AnAttachmentWithALengthButNoDataIsTakenWhateverTheLength) {
    MuxAttachment record{};
    for (const UINT32 size : {0u, 1000u, 0x7fffffffu, 0xffffffffu}) {
        record.dataSize = size;
        EXPECT_EQ(S_OK, Attach(record)) << size;
    }
}

TEST_F(Parameters, AttachmentsWithEmptyAndSupplementaryNamesReachTheFile) {
    const win::Bstr empty{WideStringView()};
    const win::Bstr supplementary{WideStringView(OLESTR("\U0001F3AC.ttf"))};
    char noMimeType[] = "";
    BYTE data[] = {7};
    ASSERT_EQ(S_OK, Attach({empty.Get(), empty.Get(), noMimeType, 0, data, 1}));
    ASSERT_EQ(S_OK, Attach({supplementary.Get(), supplementary.Get(), noMimeType, sizeof(data), data, 2}));
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.ConnectOutput());
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, m_rig.Stop());
    EXPECT_TRUE(FileHolds("\xF0\x9F\x8E\xAC.ttf"));
}

TEST_F(Parameters, AnAttachmentOf100MiBReachesTheFileWholeAndTheCallersBytesStayTheCallers) {
    constexpr UINT32 kSize = 100U << 20;
    const win::Bstr fileName{WideStringView(OLESTR("large.bin"))};
    std::vector<BYTE> data(kSize);
    for (size_t i = 0; i < data.size(); ++i) {
        data[i] = static_cast<BYTE>(i * 31 >> 7);
    }
    const std::vector<BYTE> before = data;
    ASSERT_EQ(S_OK, Attach({fileName.Get(), nullptr, nullptr, kSize, data.data(), 3}));
    EXPECT_TRUE(data == before);
    data = {};
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.ConnectOutput());
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, m_rig.Stop());
    const std::vector<BYTE>& file = m_rig.File();
    EXPECT_NE(file.end(), std::search(file.begin(), file.end(), before.begin(), before.end()));
}

TEST_F(Parameters, SupplementaryCharactersOfARowComeBack) {
    const win::Bstr name{WideStringView(OLESTR("\U0001F3AC"))};
    ASSERT_EQ(S_OK, SetRow({0, 1, 0, 0, nullptr, name.Get(), -1}));
    OwnedRow read;
    ASSERT_EQ(S_OK, GetRow(read.row));
    EXPECT_EQ(name.View(), WideStringView(read.row.name, SysStringLen(read.row.name)));
}

// A filter of its own each time: nothing but that one value makes it dirty.
class DirtyParameters : public Parameters {};

TEST_F(DirtyParameters, ADocumentTypeMakesTheFilterDirty) {
    EXPECT_EQ(S_FALSE, m_config->IsDirty());
    EXPECT_EQ(S_OK, SetNumber(MKVMUX_DocType, 1));
    EXPECT_EQ(S_OK, m_config->IsDirty());
}

TEST_F(DirtyParameters, EachFieldOfARowMakesTheFilterDirty) {
    const win::Bstr english{WideStringView(OLESTR("English"))};
    const win::Bstr empty{WideStringView()};
    const win::Bstr text{WideStringView(OLESTR("x"))};
    const TrackSettings rows[] = {
        {3, 0, 0, 0, english.Get(), empty.Get(), -1}, {3, 1, 1, 0, english.Get(), empty.Get(), -1},
        {3, 1, 0, 1, english.Get(), empty.Get(), -1}, {3, 1, 0, 0, text.Get(), empty.Get(), -1},
        {3, 1, 0, 0, nullptr, empty.Get(), -1},       {3, 1, 0, 0, english.Get(), text.Get(), -1},
        {3, 1, 0, 0, english.Get(), nullptr, -1},     {3, 1, 0, 0, english.Get(), empty.Get(), 2},
    };
    const TrackSettings fresh{3, 1, 0, 0, english.Get(), empty.Get(), -1};
    for (const TrackSettings& row : rows) {
        EXPECT_EQ(S_OK, SetRow(fresh));
        MemoryStream saved;
        EXPECT_EQ(S_OK, m_config->Save(&saved, TRUE));
        EXPECT_EQ(S_FALSE, m_config->IsDirty());
        EXPECT_EQ(S_OK, SetRow(row));
        EXPECT_EQ(S_OK, m_config->IsDirty()) << &row - rows;
    }
}

TEST_F(DirtyParameters, AnAttachmentMakesTheFilterDirty) {
    EXPECT_EQ(S_OK, Attach({nullptr, nullptr, nullptr, 0, nullptr, 1}));
    EXPECT_EQ(S_OK, m_config->IsDirty());
}

TEST_F(DirtyParameters, WhatIsThereAlreadyAndWhatIsIgnoredLeaveTheFilterClean) {
    EXPECT_EQ(S_OK, SetNumber(MKVMUX_DocType, 0));
    EXPECT_EQ(S_OK, SetNumber(MKVMUX_DocType, 2));
    OwnedRow read;
    read.row.index = 5;
    ASSERT_EQ(S_OK, GetRow(read.row));
    EXPECT_EQ(S_OK, SetRow(read.row));
    EXPECT_EQ(E_INVALIDARG, SetRow({100, 0, 0, 0, nullptr, nullptr, -1}));
    EXPECT_EQ(S_OK, SetLogDirectory(nullptr)); // not persisted
    EXPECT_EQ(S_FALSE, m_config->IsDirty());
}

TEST_F(DirtyParameters, LoadingAConfigurationLeavesTheFilterClean) {
    MemoryStream saved;
    ASSERT_EQ(S_OK, m_config->Save(&saved, FALSE));
    saved.SetBytes(saved.Bytes());
    EXPECT_EQ(S_OK, SetNumber(MKVMUX_DocType, 1));
    EXPECT_EQ(S_OK, m_config->Load(&saved));
    EXPECT_EQ(S_FALSE, m_config->IsDirty());
}

} // namespace
