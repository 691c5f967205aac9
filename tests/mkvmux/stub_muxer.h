// StubMuxer: a filter with one input and one output pin in place of the muxer, to see what the tool does with each
// answer. It takes the major types given and no settings.
#pragma once

#include <vector>

#include "dshow/base_filter.h"
#include "dshow/base_input_pin.h"
#include "dshow/base_output_pin.h"

namespace test_mkvmux {

class StubInputPin final : public CBaseInputPin {
  public:
    StubInputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr, std::vector<GUID> majorTypes);
    HRESULT CheckMediaType(const CMediaType* type) override;

  private:
    std::vector<GUID> m_majorTypes;
};

class StubOutputPin final : public CBaseOutputPin {
  public:
    StubOutputPin(CBaseFilter* filter, CCritSec* lock, HRESULT* phr);
    HRESULT CheckMediaType(const CMediaType* type) override;
    HRESULT GetMediaType(int position, CMediaType* type) override;
    HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* request) override;
};

class StubMuxer final : public CBaseFilter {
  public:
    explicit StubMuxer(std::vector<GUID> majorTypes, HRESULT* phr);

    int GetPinCount() override { return 2; }
    CBasePin* GetPin(int index) override;

  private:
    CCritSec m_lock;
    StubOutputPin m_output;
    StubInputPin m_input;
};

[[nodiscard]] win::ComPtr<IBaseFilter> MakeStubMuxer(std::vector<GUID> majorTypes);

} // namespace test_mkvmux
