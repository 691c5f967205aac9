// The filter's configuration in a compound file, saved and loaded in the order that graph files use.
#include <gtest/gtest.h>

#include "client/module_config.h"
#include "tests/module/loaded_module.h"
#include "tests/support/fake_upstream_pin.h"
#include "tests/support/media_types.h"
#include "tests/support/pin_lookup.h"

using namespace test_support;

namespace {

constexpr DWORD kExclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

class SavedGraph : public ::testing::Test {
  protected:
    SavedGraph() {
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        WCHAR folder[MAX_PATH] = {};
        GetTempPathW(MAX_PATH, folder);
        m_path =
            WideString(folder) + OLESTR("qrx_saved_graph_") + ToWideDecimal(GetCurrentProcessId()) + OLESTR(".grf");
        // Loading creates the filter by its class, as a graph loader does; no registration is needed for that here.
        EXPECT_EQ(S_OK, CoRegisterClassObject(CLSID_MatroskaMuxer, m_module.Factory(CLSID_MatroskaMuxer).Get(),
                                              CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &m_class));
    }
    ~SavedGraph() override {
        CoRevokeClassObject(m_class);
        DeleteFileW(m_path.c_str());
        CoUninitialize();
    }

    [[nodiscard]] win::ComPtr<IModuleConfig> CreateFilter() const {
        win::ComPtr<IModuleConfig> filter;
        EXPECT_EQ(S_OK,
                  m_module.Factory(CLSID_MatroskaMuxer)->CreateInstance(nullptr, IID_IModuleConfig, filter.PutVoid()));
        return filter;
    }

    // Class identifier and configuration, in a stream of a storage of the compound file.
    void SaveToFile(IModuleConfig* filter) const {
        win::ComPtr<IStorage> storage;
        ASSERT_EQ(S_OK, StgCreateDocfile(m_path.c_str(), STGM_CREATE | STGM_TRANSACTED | kExclusive, 0, storage.Put()));
        win::ComPtr<IStream> stream;
        ASSERT_EQ(S_OK, storage->CreateStream(OLESTR("muxer"), STGM_CREATE | kExclusive, 0, 0, stream.Put()));
        EXPECT_EQ(S_OK, OleSaveToStream(filter, stream.Get()));
        stream.Reset();
        EXPECT_EQ(S_OK, storage->Commit(STGC_DEFAULT));
    }
    [[nodiscard]] win::ComPtr<IStream> OpenFile() {
        EXPECT_EQ(S_OK, StgOpenStorage(m_path.c_str(), nullptr, kExclusive, nullptr, 0, m_opened.Put()));
        win::ComPtr<IStream> stream;
        EXPECT_EQ(S_OK, m_opened->OpenStream(OLESTR("muxer"), nullptr, kExclusive, 0, stream.Put()));
        return stream;
    }
    // As a graph loader does for a filter that it has created already.
    HRESULT LoadInto(IModuleConfig* filter) {
        const auto stream = OpenFile();
        CLSID clsid{};
        EXPECT_EQ(S_OK, ReadClassStm(stream.Get(), &clsid));
        EXPECT_EQ(CLSID_MatroskaMuxer, clsid);
        return filter->Load(stream.Get());
    }

    static void Configure(IModuleConfig* filter, INT32 index, const WCHAR* name, BYTE payload) {
        const client::ModuleConfig config(filter);
        EXPECT_EQ(S_OK, config.SetTrack({index, 1, 1, 0, win::Bstr(), win::Bstr(WideStringView(name))}));
        client::Attachment attachment;
        attachment.fileName = OLESTR("data.bin");
        attachment.data.emplace(&payload, 1);
        attachment.uid = payload;
        EXPECT_EQ(S_OK, config.Attach(attachment));
        EXPECT_EQ(S_OK, config.SetDocType(MuxDocType_Webm));
    }
    static WideString NameOfRow(IModuleConfig* filter, INT32 index) {
        client::TrackRow row;
        EXPECT_EQ(S_OK, client::ModuleConfig(filter).GetTrack(index, row));
        return WideString(row.name.View());
    }
    static MuxDocType DocTypeOf(IModuleConfig* filter) {
        MuxDocType docType{};
        EXPECT_EQ(S_OK, client::ModuleConfig(filter).GetDocType(docType));
        return docType;
    }
    // The size of what the filter saves tells how many attachments it holds.
    static UINT64 SavedSize(IModuleConfig* filter) {
        win::ComPtr<IStream> stream;
        EXPECT_EQ(S_OK, CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()));
        EXPECT_EQ(S_OK, filter->Save(stream.Get(), FALSE));
        STATSTG stat{};
        EXPECT_EQ(S_OK, stream->Stat(&stat, STATFLAG_NONAME));
        return stat.cbSize.QuadPart;
    }

    LoadedModule m_module;
    WideString m_path;
    DWORD m_class = 0;
    win::ComPtr<IStorage> m_opened;
};

TEST_F(SavedGraph, ComesBackIntoAFilterThatTheLoaderCreates) {
    const auto saved = CreateFilter();
    Configure(saved.Get(), 3, OLESTR("commentary"), 7);
    SaveToFile(saved.Get());
    win::ComPtr<IModuleConfig> loaded;
    ASSERT_EQ(S_OK, OleLoadFromStream(OpenFile().Get(), IID_IModuleConfig, loaded.PutVoid()));
    EXPECT_EQ(WideString(OLESTR("commentary")), NameOfRow(loaded.Get(), 3));
    EXPECT_EQ(MuxDocType_Webm, DocTypeOf(loaded.Get()));
    EXPECT_EQ(SavedSize(saved.Get()), SavedSize(loaded.Get()));
    m_opened.Reset();
}

TEST_F(SavedGraph, ComesBackIntoAConnectedFilterWhosePinsKeepTheirNamesAndIdentifiers) {
    const auto saved = CreateFilter();
    Configure(saved.Get(), 0, OLESTR("first"), 7);
    SaveToFile(saved.Get());

    const auto filter = CreateFilter();
    const auto base = filter.Query<IBaseFilter>(IID_IBaseFilter);
    FakeUpstreamPin source(WaveType(mediasubtype::kPcm));
    ASSERT_EQ(S_OK, source.ConnectTo(PinNamed(base.Get(), OLESTR("In 0")).Get()));
    const auto before = PinsOf(base.Get());
    ASSERT_EQ(S_OK, LoadInto(filter.Get()));
    m_opened.Reset();
    EXPECT_EQ(WideString(OLESTR("first")), NameOfRow(filter.Get(), 0));

    const auto after = PinsOf(base.Get());
    ASSERT_EQ(before.size(), after.size());
    for (size_t i = 0; i < after.size(); ++i) {
        EXPECT_EQ(before[i].Get(), after[i].Get());
        LPWSTR id = nullptr;
        ASSERT_EQ(S_OK, after[i]->QueryId(&id));
        win::ComPtr<IPin> found;
        EXPECT_EQ(S_OK, base->FindPin(id, found.Put())) << "a graph loader finds the pin by its identifier";
        EXPECT_EQ(after[i].Get(), found.Get());
        CoTaskMemFree(id);
    }
    source.Unplug();
}

TEST_F(SavedGraph, ReplacesTheRowsAndAddsTheAttachmentsOfAConfiguredFilter) {
    const auto saved = CreateFilter();
    Configure(saved.Get(), 1, OLESTR("saved"), 7);
    SaveToFile(saved.Get());

    const auto filter = CreateFilter();
    Configure(filter.Get(), 2, OLESTR("own"), 9);
    ASSERT_EQ(S_OK, LoadInto(filter.Get()));
    m_opened.Reset();
    EXPECT_EQ(WideString(OLESTR("saved")), NameOfRow(filter.Get(), 1));
    EXPECT_EQ(WideString(), NameOfRow(filter.Get(), 2)) << "rows are replaced";
    // The saved rows and one attachment more: four lengths, the name's 16 bytes, one byte of data, the UID.
    EXPECT_EQ(SavedSize(saved.Get()) + 4 * 4 + 16 + 1 + 8, SavedSize(filter.Get()));
}

} // namespace
