// NullStream: an IStream that forgets what is written and keeps only position, size and counts, so that the sink
// costs next to nothing and what is measured is the muxer.
//
// Units: bytes. Owner: the measurement; references are counted, none deletes it.
// Threads: one caller at a time, as the muxer's writer lock grants; the counts from any. Errors: none.
#pragma once

#include <atomic>

#include "tests/support/reference_count.h"
#include "win/platform.h"

namespace bench {

class NullStream : public IStream {
  public:
    NullStream() = default;
    NullStream(const NullStream&) = delete;
    NullStream& operator=(const NullStream&) = delete;

    [[nodiscard]] UINT64 Size() const { return m_size; } // the end of the last byte written

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.Add(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_references.Release(); }
    // ISequentialStream
    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG size, ULONG* read) override;
    HRESULT STDMETHODCALLTYPE Write(const void* data, ULONG size, ULONG* written) override;
    // IStream
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override;
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
    ~NullStream() = default; // deleted only as what it is

    [[nodiscard]] UINT64 Position() const { return m_position; }

    // Before each write, on the writing thread.
    virtual void OnWrite() {}

  private:
    test_support::ReferenceCount m_references{"a null stream"};
    UINT64 m_position = 0;
    std::atomic<UINT64> m_size{0};
};

class PlainNullStream final : public NullStream {};

} // namespace bench
