// CSourcePin: delivers the packets of one stream as samples.
//
// Units: times in 100 ns. Owner: the filter. Threads: Begin and Deliver… on the filter's streaming thread alone.
// Errors: a packet that no buffer holds is lost, and DeliverPacket says why; a peer that takes no more samples gets
// none.
#pragma once

#include <atomic>

#include "dshow/base_output_pin.h"
#include "sources/base/packet_allocator.h"
#include "sources/base/packet_reader.h"

namespace source {

class CSourcePin final : public CBaseOutputPin {
  public:
    CSourcePin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr, const StreamDescription& stream);

    // Begins a run at the start of the stream.
    void Begin();
    // S_FALSE when the peer takes no more samples; a failure when this one was lost. The packet has other bytes then.
    [[nodiscard]] HRESULT DeliverPacket(Packet& packet);
    void DeliverEnd();

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    // The peer's own if it has one, else ours, whose samples take a packet's bytes without copying them.
    HRESULT DecideAllocator(IMemInputPin* peer, IMemAllocator** allocator) override;
    HRESULT InitAllocator(IMemAllocator** allocator) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;
    HRESULT Active() override;
    HRESULT Inactive() override;

  private:
    [[nodiscard]] HRESULT Send(Packet& packet);
    [[nodiscard]] HRESULT MakeSample(Packet& packet, win::ComPtr<IMediaSample>& sample);
    [[nodiscard]] HRESULT MakeRoom(size_t bytes);
    [[nodiscard]] HRESULT TryToGrow(size_t bytes);
    [[nodiscard]] static HRESULT Copy(const Packet& packet, IMediaSample& sample);
    [[nodiscard]] static HRESULT Describe(const Packet& packet, LONG bytes, IMediaSample& sample);

    const std::vector<CMediaType> m_types;
    const size_t m_firstBufferBytes;
    win::ComPtr<CPacketAllocator> m_ownAllocator; // the one agreed on, unless that is the peer's
    std::atomic<size_t> m_bufferBytes{0};         // of each buffer of the allocator
    bool m_takesSamples = false;
    CCritSec m_growLock; // growing the buffers against stopping
    bool m_active = false;
};

} // namespace source
