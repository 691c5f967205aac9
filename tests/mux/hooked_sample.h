// HookedSample: a media sample that runs the test's code when its bytes are asked for.
//
// Owner: the test; references are counted, none deletes it. Threads: the one that delivers it.
// Errors: whatever the code throws leaves GetPointer, as no well-behaved sample would let it.
#pragma once

#include <functional>

#include "tests/support/fake_media_sample.h"

class HookedSample final : public IMediaSample {
  public:
    HookedSample(std::vector<BYTE> data, std::function<void()> onGetPointer)
        : m_inner(std::move(data)), m_onGetPointer(std::move(onGetPointer)) {}

    [[nodiscard]] LONG References() const { return m_references.Count(); }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.Add(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_references.Release(); }
    // IMediaSample
    HRESULT STDMETHODCALLTYPE GetPointer(BYTE** buffer) override {
        m_onGetPointer();
        return m_inner.GetPointer(buffer);
    }
    HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override {
        *start = 0;
        *stop = 1;
        return S_OK;
    }
    LONG STDMETHODCALLTYPE GetActualDataLength() override { return m_inner.GetActualDataLength(); }
    LONG STDMETHODCALLTYPE GetSize() override { return m_inner.GetSize(); }
    HRESULT STDMETHODCALLTYPE IsSyncPoint() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME*, REFERENCE_TIME*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsPreroll() override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetPreroll(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetActualDataLength(LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMediaType(AM_MEDIA_TYPE**) override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsDiscontinuity() override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMediaTime(INT64*, INT64*) override { return VFW_E_MEDIA_TIME_NOT_SET; }
    HRESULT STDMETHODCALLTYPE SetMediaTime(INT64*, INT64*) override { return E_NOTIMPL; }

  private:
    test_support::ReferenceCount m_references{"a hooked sample"};
    test_support::FakeMediaSample m_inner;
    std::function<void()> m_onGetPointer;
};
