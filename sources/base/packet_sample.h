// PacketSample: a media sample whose bytes can be exchanged for those of a packet, so that these need not be copied.
//
// Units: bytes; times in 100 ns. Owner: its home, to which it goes back with its last reference.
// Threads: references any; the rest whoever holds it. Errors: as IMediaSample has them.
#pragma once

#include <atomic>
#include <vector>

#include "dshow/media_type.h"
#include "win/platform.h"

namespace source {

class PacketSample;

class SampleHome {
  public:
    // The last reference has gone. The sample may be destroyed in here.
    virtual void TakeBack(PacketSample& sample) noexcept = 0;

  protected:
    ~SampleHome() = default;
};

class PacketSample final : public IMediaSample {
  public:
    explicit PacketSample(SampleHome& home) : m_home(home) {}

    // Gives it one reference and the properties of a new one, and room for so many bytes.
    void LendOut(LONG bytes);
    // Holds the packet's bytes from now on, and is as large as they are; the packet gets those that were here. No bytes
    // are left where they are.
    void Exchange(std::vector<BYTE>& packet);

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) noexcept override;
    ULONG STDMETHODCALLTYPE AddRef() noexcept override;
    ULONG STDMETHODCALLTYPE Release() noexcept override;
    // IMediaSample
    HRESULT STDMETHODCALLTYPE GetPointer(BYTE** buffer) noexcept override;
    LONG STDMETHODCALLTYPE GetSize() noexcept override { return m_size; }
    HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) noexcept override;
    HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) noexcept override;
    HRESULT STDMETHODCALLTYPE IsSyncPoint() noexcept override { return m_isSyncPoint ? S_OK : S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL isSyncPoint) noexcept override;
    HRESULT STDMETHODCALLTYPE IsPreroll() noexcept override { return m_isPreroll ? S_OK : S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetPreroll(BOOL isPreroll) noexcept override;
    LONG STDMETHODCALLTYPE GetActualDataLength() noexcept override { return m_length; }
    HRESULT STDMETHODCALLTYPE SetActualDataLength(LONG length) noexcept override;
    HRESULT STDMETHODCALLTYPE GetMediaType(AM_MEDIA_TYPE** type) noexcept override;
    HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE* type) noexcept override;
    HRESULT STDMETHODCALLTYPE IsDiscontinuity() noexcept override { return m_isDiscontinuity ? S_OK : S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL isDiscontinuity) noexcept override;
    HRESULT STDMETHODCALLTYPE GetMediaTime(LONGLONG* start, LONGLONG* stop) noexcept override;
    HRESULT STDMETHODCALLTYPE SetMediaTime(LONGLONG* start, LONGLONG* stop) noexcept override;

  private:
    SampleHome& m_home;
    std::atomic<ULONG> m_references{0};
    std::vector<BYTE> m_bytes; // as many as the size, once they were asked for
    LONG m_size = 0;
    LONG m_length = 0; // of them with content
    bool m_hasStart = false;
    bool m_hasStop = false;
    bool m_hasMediaTime = false;
    bool m_isSyncPoint = false;
    bool m_isPreroll = false;
    bool m_isDiscontinuity = false;
    bool m_hasType = false;
    REFERENCE_TIME m_start = 0;
    REFERENCE_TIME m_stop = 0;
    LONGLONG m_mediaStart = 0;
    LONGLONG m_mediaStop = 0;
    CMediaType m_type;
};

} // namespace source
