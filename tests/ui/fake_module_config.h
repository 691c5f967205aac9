// FakeModuleConfig: a filter that is nothing but its parameters, which records what is written and can refuse it.
//
// Owner: the test; references are counted, none deletes it. Threads: one. Errors: as set.
#pragma once

#include <qrx_mkvmuxer.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/reference_count.h"

namespace ui_test {

class FakeModuleConfig final : public IModuleConfig {
  public:
    struct Row {
        BYTE enabled = 1;
        BYTE isDefault = 0;
        BYTE reserved = 0;
        std::wstring language = L"English";
        std::wstring name;
        INT32 trackType = 1;
        bool operator==(const Row&) const = default;
    };
    struct Write {
        std::optional<INT32> track; // none: the document type
        Row row;
        ULONG docType = 0;
    };

    std::map<INT32, Row> rows; // what is not here is out of range
    USHORT inputCount = 0;
    ULONG docType = 0;
    HRESULT trackAnswer = S_OK; // to writes
    HRESULT docTypeAnswer = S_OK;
    HRESULT readAnswer = S_OK; // to reads
    std::vector<Write> writes;

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
    HRESULT STDMETHODCALLTYPE DescribeValue(const GUID*, IUnknown**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsSupported(const GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetDefaults() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE EnumValues(LONG*, GUID**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CommitChanges() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE DeclineChanges() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SaveToRegistry(HKEY, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LoadFromRegistry(HKEY, BSTR) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Advise(IUnknown*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Unadvise(IUnknown*) override { return E_NOTIMPL; }
    // IPersistStream
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsDirty() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Load(IStream*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Save(IStream*, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER*) override { return E_NOTIMPL; }

  private:
    test_support::ReferenceCount m_references{"a fake configuration"};
};

} // namespace ui_test
