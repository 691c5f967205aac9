// FakeMediaSample: one IMediaSample over bytes that the test gives, with every property settable.
//
// Units: times in 100 ns. Owner: the test; references are counted, none deletes it.
// Threads: the properties are set before the sample is delivered; then read by any thread.
// Errors: GetPointer's answer can be made a failure.
#pragma once

#include <vector>

#include "tests/support/reference_count.h"
#include "win/platform.h"

namespace test_support {

class FakeMediaSample final : public IMediaSample {
  public:
    explicit FakeMediaSample(std::vector<BYTE> data = {}) : m_data(std::move(data)) {}

    // Without one of these the sample has no time.
    FakeMediaSample& WithTimes(INT64 start, INT64 stop);
    FakeMediaSample& WithStartOnly(INT64 start); // GetTime answers VFW_S_NO_STOP_TIME
    FakeMediaSample& WithSyncPoint(bool syncPoint = true);
    FakeMediaSample& WithPreroll(bool preroll = true);
    FakeMediaSample& WithDiscontinuity(bool discontinuity = true);
    FakeMediaSample& WithMediaTimes(INT64 start, INT64 stop);
    // For samples that lie: a length or a size other than the data's, a GetPointer that fails.
    FakeMediaSample& WithClaimedLength(LONG bytes);
    FakeMediaSample& WithClaimedSize(LONG bytes);
    FakeMediaSample& WithPointerFailure(HRESULT result);
    [[nodiscard]] LONG References() const { return m_references.Count(); }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.Add(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_references.Release(); }
    // IMediaSample
    HRESULT STDMETHODCALLTYPE GetPointer(BYTE** buffer) override;
    LONG STDMETHODCALLTYPE GetSize() override;
    HRESULT STDMETHODCALLTYPE GetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override;
    HRESULT STDMETHODCALLTYPE SetTime(REFERENCE_TIME* start, REFERENCE_TIME* stop) override;
    HRESULT STDMETHODCALLTYPE IsSyncPoint() override { return m_syncPoint ? S_OK : S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetSyncPoint(BOOL syncPoint) override;
    HRESULT STDMETHODCALLTYPE IsPreroll() override { return m_preroll ? S_OK : S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetPreroll(BOOL preroll) override;
    LONG STDMETHODCALLTYPE GetActualDataLength() override { return m_claimedLength; }
    HRESULT STDMETHODCALLTYPE SetActualDataLength(LONG length) override;
    HRESULT STDMETHODCALLTYPE GetMediaType(AM_MEDIA_TYPE** mediaType) override;
    HRESULT STDMETHODCALLTYPE SetMediaType(AM_MEDIA_TYPE* mediaType) override;
    HRESULT STDMETHODCALLTYPE IsDiscontinuity() override { return m_discontinuity ? S_OK : S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetDiscontinuity(BOOL discontinuity) override;
    HRESULT STDMETHODCALLTYPE GetMediaTime(LONGLONG* start, LONGLONG* stop) override;
    HRESULT STDMETHODCALLTYPE SetMediaTime(LONGLONG* start, LONGLONG* stop) override;

  private:
    enum class TimeKind { None, StartOnly, Both };

    ReferenceCount m_references{"a media sample"};
    std::vector<BYTE> m_data;
    LONG m_claimedLength = static_cast<LONG>(m_data.size());
    LONG m_claimedSize = static_cast<LONG>(m_data.size());
    HRESULT m_pointerResult = S_OK;
    TimeKind m_timeKind = TimeKind::None;
    INT64 m_start = 0;
    INT64 m_stop = 0;
    bool m_hasMediaTime = false;
    INT64 m_mediaStart = 0;
    INT64 m_mediaStop = 0;
    bool m_syncPoint = false;
    bool m_preroll = false;
    bool m_discontinuity = false;
};

} // namespace test_support
