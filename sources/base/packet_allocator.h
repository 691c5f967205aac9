// CPacketAllocator: a memory allocator without kernel objects: a buffer that is there is taken and given back without a
// call of the system. Its samples exchange their bytes for a packet's (PacketSample), so that memory is taken only for
// those who ask for a pointer.
//
// Units: bytes. Owner: its references, of which each sample that is out holds one; so it outlives Decommit as long as
// somebody keeps a sample. Threads: any. Errors: as IMemAllocator has them; VFW_E_BADALIGN for room in front of the
// bytes and for alignment beyond the heap's, which an exchange could not keep.
#pragma once

#include <memory>
#include <vector>

#include "dshow/unknown.h"
#include "sources/base/packet_sample.h"
#include "win/condition_variable.h"
#include "win/critical_section.h"
#include "win/platform.h"

namespace source {

class CPacketAllocator final : public CUnknown, public IMemAllocator, public SampleHome {
  public:
    CPacketAllocator() : CUnknown(OLESTR("PacketAllocator"), nullptr) {}

    // As GetBuffer without flags.
    [[nodiscard]] HRESULT GetSample(PacketSample** sample);

    DECLARE_IUNKNOWN
    STDMETHODIMP NonDelegatingQueryInterface(REFIID iid, void** object) override;

    // IMemAllocator
    HRESULT STDMETHODCALLTYPE SetProperties(ALLOCATOR_PROPERTIES* request,
                                            ALLOCATOR_PROPERTIES* actual) noexcept override;
    HRESULT STDMETHODCALLTYPE GetProperties(ALLOCATOR_PROPERTIES* properties) noexcept override;
    HRESULT STDMETHODCALLTYPE Commit() noexcept override;
    // Buffers that are out stay good; the last one that comes back frees them all.
    HRESULT STDMETHODCALLTYPE Decommit() noexcept override;
    // Waits for a buffer, or answers VFW_E_TIMEOUT with AM_GBF_NOWAIT; VFW_E_NOT_COMMITTED once it is decommitted.
    HRESULT STDMETHODCALLTYPE GetBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                        DWORD flags) noexcept override;
    // Refused: a sample comes back by itself with its last reference.
    HRESULT STDMETHODCALLTYPE ReleaseBuffer(IMediaSample* sample) noexcept override;

    // SampleHome
    void TakeBack(PacketSample& sample) noexcept override;

  private:
    ~CPacketAllocator() override = default;
    HRESULT Take(DWORD flags, PacketSample*& sample);
    [[nodiscard]] bool IsOut() const QRX_REQUIRES(m_lock) { return m_free.size() < m_samples.size(); }
    void FreeSamples() QRX_REQUIRES(m_lock);

    win::CriticalSection m_lock;
    win::ConditionVariable m_changed; // a buffer came back, or no more are given
    ALLOCATOR_PROPERTIES m_properties QRX_GUARDED_BY(m_lock){};
    bool m_isCommitted QRX_GUARDED_BY(m_lock) = false;
    std::vector<std::unique_ptr<PacketSample>> m_samples QRX_GUARDED_BY(m_lock);
    std::vector<PacketSample*> m_free QRX_GUARDED_BY(m_lock); // has room for all of them
};

} // namespace source
