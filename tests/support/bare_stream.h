// BareStream: what every stream of tests has in common: it answers to its three interfaces, counts its references, and
// refuses what no file is written with. Its heir does the rest.
//
// Owner: the test; references are counted, none deletes it. Threads: any. Errors: E_NOTIMPL for what is refused.
#pragma once

#include "tests/support/reference_count.h"
#include "win/platform.h"

namespace test_support {

class BareStream : public IStream {
  public:
    BareStream(const BareStream&) = delete;
    BareStream& operator=(const BareStream&) = delete;

    [[nodiscard]] LONG References() const { return m_references.Count(); }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.Add(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_references.Release(); }
    // ISequentialStream
    HRESULT STDMETHODCALLTYPE Read(void*, ULONG, ULONG*) override { return E_NOTIMPL; }
    // IStream
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

  protected:
    // The name is told when a reference is left over.
    explicit BareStream(const char* name) : m_references(name) {}
    ~BareStream() = default; // deleted only as what it is

  private:
    ReferenceCount m_references;
};

} // namespace test_support
