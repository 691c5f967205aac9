// WaryAllocator: the system's allocator with a will of its own: it refuses sizes, or grants what it does not have.
//
// Units: bytes. Owner: the test; references are counted, none deletes it. Threads: any.
#pragma once

#include <atomic>
#include <optional>

#include "tests/support/fake_media_sample.h"
#include "tests/support/reference_count.h"
#include "win/com_ptr.h"

namespace test_source {

class WaryAllocator final : public IMemAllocator {
  public:
    WaryAllocator();

    // Larger buffers are refused.
    void RefuseAbove(LONG bytes) { m_most = bytes; }
    // Larger buffers are promised, but each sample has that size and says so; one at a time is handed out.
    void PromiseAbove(LONG bytes);
    // Whether anything was written behind the size that those samples have.
    [[nodiscard]] bool WroteBehindTheSize();
    // Of all that was granted: buffers times their size.
    [[nodiscard]] LONGLONG LargestPool() const { return m_largestPool; }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.Add(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_references.Release(); }
    // IMemAllocator
    HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override;
    HRESULT STDMETHODCALLTYPE GetProperties(ALLOCATOR_PROPERTIES* properties) override;
    HRESULT STDMETHODCALLTYPE Commit() override { return m_inner->Commit(); }
    HRESULT STDMETHODCALLTYPE Decommit() override { return m_inner->Decommit(); }
    HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                        DWORD flags) override;
    HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample* sample) override { return m_inner->ReleaseBuffer(sample); }

  private:
    test_support::ReferenceCount m_references{"an allocator"};
    win::ComPtr<IMemAllocator> m_inner;
    LONG m_most = MAXLONG;
    LONG m_real = MAXLONG;
    std::optional<test_support::FakeMediaSample> m_narrowSample; // of m_real bytes, with more behind them
    std::atomic<LONGLONG> m_largestPool{0};
};

} // namespace test_source
