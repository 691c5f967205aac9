// FakeAllocator: an IMemAllocator that negotiates but hands out no buffers.
//
// Units: bytes. Owner: the test or a fake pin; references are counted, none deletes it. Threads: one.
// Errors: as set: SetProperties can fail, or grant other properties than were asked for.
#pragma once

#include <optional>

#include "tests/support/reference_count.h"
#include "win/platform.h"

namespace test_support {

class FakeAllocator final : public IMemAllocator {
  public:
    // What SetProperties grants instead of what it is asked for.
    void GrantInstead(const ALLOCATOR_PROPERTIES& properties) { m_granted = properties; }
    void FailSetProperties(HRESULT result) { m_setPropertiesResult = result; }
    // What SetProperties was asked for last.
    [[nodiscard]] const ALLOCATOR_PROPERTIES& Requested() const { return m_requested; }
    [[nodiscard]] bool IsCommitted() const { return m_committed; }
    [[nodiscard]] LONG References() const { return m_references.Count(); }

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return m_references.Add(); }
    ULONG STDMETHODCALLTYPE Release() override { return m_references.Release(); }
    // IMemAllocator
    HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* request, ALLOCATOR_PROPERTIES* actual) override;
    HRESULT STDMETHODCALLTYPE GetProperties(ALLOCATOR_PROPERTIES* properties) override;
    HRESULT STDMETHODCALLTYPE Commit() override;
    HRESULT STDMETHODCALLTYPE Decommit() override;
    HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                        DWORD flags) override;
    HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample* sample) override;

  private:
    ReferenceCount m_references{"an allocator"};
    ALLOCATOR_PROPERTIES m_requested{};
    ALLOCATOR_PROPERTIES m_current{};
    std::optional<ALLOCATOR_PROPERTIES> m_granted;
    HRESULT m_setPropertiesResult = S_OK;
    bool m_committed = false;
};

} // namespace test_support
