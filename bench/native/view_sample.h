// ViewSample: a media sample over bytes that lie elsewhere, set anew for each packet, so that the source costs nothing.
//
// Units: times in 100 ns. Owner: a producer; references are counted, none deletes it. Threads: the producer's.
#pragma once

#include <atomic>

#include "bench/native/packet_load.h"
#include "win/platform.h"

namespace bench {

class ViewSample final : public IMediaSample {
  public:
    ViewSample() = default;
    ViewSample(const ViewSample&) = delete;
    ViewSample& operator=(const ViewSample&) = delete;

    void Show(const LoadPacket& packet) { m_packet = packet; }
    [[nodiscard]] LONG References() const { return m_references; }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++m_references); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--m_references); }
    // IMediaSample
    HRESULT STDMETHODCALLTYPE GetPointer(BYTE** buffer) override;
    LONG STDMETHODCALLTYPE GetSize() override { return static_cast<LONG>(m_packet.size); }
    HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override;
    HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME*, REFERENCE_TIME*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsSyncPoint() override { return m_packet.keyframe ? S_OK : S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsPreroll() override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetPreroll(BOOL) override { return E_NOTIMPL; }
    LONG STDMETHODCALLTYPE GetActualDataLength() override { return GetSize(); }
    HRESULT STDMETHODCALLTYPE SetActualDataLength(LONG) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMediaType(AM_MEDIA_TYPE** mediaType) override;
    HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsDiscontinuity() override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMediaTime(LONGLONG*, LONGLONG*) override { return VFW_E_MEDIA_TIME_NOT_SET; }
    HRESULT STDMETHODCALLTYPE SetMediaTime(LONGLONG*, LONGLONG*) override { return E_NOTIMPL; }

  private:
    std::atomic<LONG> m_references{0};
    LoadPacket m_packet;
};

} // namespace bench
