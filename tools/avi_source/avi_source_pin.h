// CAviSourcePin: delivers the chunks of one stream as samples.
//
// Units: times in 100 ns. Owner: the filter. Threads: Deliver… on the filter's streaming thread alone.
// Errors: a peer that takes no more samples gets none.
#pragma once

#include "dshow/base_output_pin.h"
#include "tools/avi_source/avi_file.h"

namespace avi {

class CAviSourcePin final : public CBaseOutputPin {
  public:
    CAviSourcePin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr, const AviStream& stream, const WideString& name);

    // Begins a run at the start of the stream.
    void Rewind();
    // Delivers the chunk, and moves on whether or not there is somebody to take it.
    void DeliverChunk(const ByteSource& source, const AviChunk& chunk);
    void DeliverEnd();

    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;

  private:
    [[nodiscard]] bool Fill(IMediaSample& sample, const ByteSource& source, const AviChunk& chunk,
                            UINT64 nextUnit) const;
    [[nodiscard]] REFERENCE_TIME TimeOf(UINT64 unit) const;

    const CMediaType m_type;
    const DWORD m_scale;
    const DWORD m_rate;
    const DWORD m_sampleSize;
    const DWORD m_largestChunk;
    UINT64 m_bytes = 0;  // delivered so far
    UINT64 m_chunks = 0; // delivered so far
    bool m_takesSamples = false;
};

} // namespace avi
