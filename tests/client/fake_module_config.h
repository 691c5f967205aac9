// FakeModuleConfig: a filter that is nothing but its parameters, which records what is written and can refuse it.
//
// Owner: the test; references are counted, none deletes it. Threads: one. Errors: as set.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/client/unimplemented_module_config.h"
#include "tests/support/reference_count.h"
#include "win/wide_string.h"

namespace test_client {

class FakeModuleConfig final : public UnimplementedModuleConfig {
  public:
    using Text = std::optional<WideString>; // none: null

    struct Row {
        BYTE enabled = 1;
        BYTE isDefault = 0;
        BYTE reserved = 0;
        Text language = WideString(OLESTR("English"));
        Text name = WideString();
        INT32 trackType = MuxTrackType_Video;
        bool operator==(const Row&) const = default;
    };
    struct Write {
        std::optional<INT32> track; // none: the document type
        Row row;
        ULONG docType = 0;
    };
    struct Attached {
        Text fileName;
        Text description;
        std::optional<std::string> mimeType;
        std::optional<std::vector<BYTE>> data;
        UINT64 uid = 0;
    };

    // What strict files are told.
    struct Options {
        UINT32 profile = MuxProfile_Compatible;
        WideString title;
        UINT64 seed = 0;
        UINT32 statistics = 1;
        MuxTrackColour colour{}; // the last that was set, of whichever input
        MuxReservedIndex index{};
        std::map<INT32, MuxTrackFlags> flags; // what is not here is out of range
    };

    MuxStatistics file{};
    std::vector<MuxInputStatistics> figures; // of the inputs
    std::map<INT32, Row> rows;               // what is not here is out of range
    USHORT inputCount = 0;
    ULONG docType = MuxDocType_Matroska;
    LONGLONG position = 0;
    std::optional<Options> options; // none: a filter of older days, which does not know the keys
    HRESULT optionAnswer = S_OK;    // to writes of options
    size_t optionWrites = 0;
    HRESULT trackAnswer = S_OK; // to writes
    HRESULT docTypeAnswer = S_OK;
    HRESULT readAnswer = S_OK; // to reads
    HRESULT persistAnswer = S_OK;
    std::vector<Write> writes;
    std::vector<Attached> attachments;
    std::vector<Text> logDirectories;
    std::vector<IUnknown*> nextOutputs; // not owned
    std::vector<MuxNextOutputRule> nextOutputRules;
    VARTYPE lastTag = VT_EMPTY; // of the value that came last
    std::vector<IStream*> loads;
    std::vector<BOOL> saves; // whether each was to clear the dirty flag

    // Rows 0 and on of those kinds.
    void AddInputs(std::initializer_list<INT32> trackTypes);
    [[nodiscard]] LONG References() const { return m_references.Count(); }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.Add(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_references.Release(); }
    // IModuleConfig
    HRESULT STDMETHODCALLTYPE SetValue(const GUID* key, const VARIANT* value) override;
    HRESULT STDMETHODCALLTYPE GetValue(const GUID* key, VARIANT* value) override;
    // IPersistStream
    HRESULT STDMETHODCALLTYPE IsDirty() override { return persistAnswer; }
    HRESULT STDMETHODCALLTYPE Load(IStream* stream) override;
    HRESULT STDMETHODCALLTYPE Save(IStream* stream, BOOL clearDirty) override;

  private:
    HRESULT GetFigures(MuxInputStatistics& record) const;
    HRESULT GetRow(TrackSettings& record) const;
    HRESULT SetOption(const GUID& key, const VARIANT& value);
    HRESULT GetOption(const GUID& key, VARIANT& value) const;

    test_support::ReferenceCount m_references{"a fake configuration"};
};

} // namespace test_client
