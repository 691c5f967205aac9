// TypeChangeSample: a sample that brings a new media type, through IMediaSample2 or through IMediaSample alone.
//
// Owner: the test; references are counted, none deletes it. Threads: one.
#pragma once

#include "dshow/am_media_type.h"
#include "dshow/media_type.h"
#include "tests/support/reference_count.h"
#include "win/platform.h"

namespace dshow_test {

enum class SampleInterface { Plain, Sample2 };

class TypeChangeSample final : public IMediaSample2 {
  public:
    explicit TypeChangeSample(CMediaType type, SampleInterface offered = SampleInterface::Plain)
        : m_type(std::move(type)), m_offered(offered) {}

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        const bool known = iid == IID_IUnknown || iid == IID_IMediaSample ||
                           (iid == IID_IMediaSample2 && m_offered == SampleInterface::Sample2);
        *object = known ? this : nullptr;
        return known ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return m_references.Add(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return m_references.Release(); }
    // IMediaSample
    STDMETHODIMP GetPointer(BYTE** buffer) noexcept override {
        *buffer = m_data;
        return S_OK;
    }
    STDMETHODIMP_(LONG) GetSize() noexcept override { return sizeof(m_data); }
    STDMETHODIMP GetTime(REFERENCE_TIME*, REFERENCE_TIME*) noexcept override { return VFW_E_SAMPLE_TIME_NOT_SET; }
    STDMETHODIMP SetTime(REFERENCE_TIME*, REFERENCE_TIME*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP IsSyncPoint() noexcept override { return S_OK; }
    STDMETHODIMP SetSyncPoint(BOOL) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP IsPreroll() noexcept override { return S_FALSE; }
    STDMETHODIMP SetPreroll(BOOL) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP_(LONG) GetActualDataLength() noexcept override { return sizeof(m_data); }
    STDMETHODIMP SetActualDataLength(LONG) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetMediaType(AM_MEDIA_TYPE** type) noexcept override {
        *type = CreateMediaType(&m_type);
        return *type != nullptr ? S_OK : E_OUTOFMEMORY;
    }
    STDMETHODIMP SetMediaType(AM_MEDIA_TYPE*) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP IsDiscontinuity() noexcept override { return S_FALSE; }
    STDMETHODIMP SetDiscontinuity(BOOL) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP GetMediaTime(LONGLONG*, LONGLONG*) noexcept override { return VFW_E_MEDIA_TIME_NOT_SET; }
    STDMETHODIMP SetMediaTime(LONGLONG*, LONGLONG*) noexcept override { return E_NOTIMPL; }
    // IMediaSample2
    STDMETHODIMP GetProperties(DWORD size, BYTE* properties) noexcept override {
        if (size < sizeof(AM_SAMPLE2_PROPERTIES)) {
            return E_INVALIDARG;
        }
        auto& out = *reinterpret_cast<AM_SAMPLE2_PROPERTIES*>(properties);
        out.dwSampleFlags = AM_SAMPLE_TYPECHANGED;
        out.pMediaType = &m_type; // stays the sample's
        out.pbBuffer = m_data;
        out.lActual = sizeof(m_data);
        return S_OK;
    }
    STDMETHODIMP SetProperties(DWORD, const BYTE*) noexcept override { return E_NOTIMPL; }

  private:
    test_support::ReferenceCount m_references{"a sample with a new type"};
    CMediaType m_type;
    const SampleInterface m_offered;
    BYTE m_data[2] = {1, 2};
};

} // namespace dshow_test
