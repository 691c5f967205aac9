// CAviSource: a source filter that reads AVI files of every codec, for systems whose own splitter cannot stream one.
//
// Owner: its references. Threads: one thread delivers the chunks of all streams in the order of the file.
// Errors: Make answers VFW_E_INVALID_FILE_FORMAT for what is no AVI file; a damaged file ends where the damage is.
#pragma once

#include <memory>
#include <stop_token>
#include <thread>
#include <vector>

#include "dshow/base_filter.h"
#include "tools/avi_source/avi_source_pin.h"
#include "win/com_ptr.h"

namespace avi {

class CAviSource final : public CBaseFilter {
  public:
    [[nodiscard]] static HRESULT Make(std::unique_ptr<ByteSource> source, win::ComPtr<IBaseFilter>& filter);
    // The file of that name.
    [[nodiscard]] static HRESULT Open(const WideString& path, win::ComPtr<IBaseFilter>& filter);
    ~CAviSource() override;

    // CBaseFilter
    int GetPinCount() override { return static_cast<int>(m_pins.size()); }
    CBasePin* GetPin(int index) override;
    STDMETHODIMP Pause() noexcept override;
    STDMETHODIMP Stop() noexcept override;

  private:
    CAviSource(std::unique_ptr<ByteSource> source, AviFile file, HRESULT* phr);
    void Stream(const std::stop_token& stop);
    void StartStreaming();
    void StopStreaming();

    CCritSec m_lock;
    const std::unique_ptr<ByteSource> m_source;
    const AviFile m_file;
    std::vector<std::unique_ptr<CAviSourcePin>> m_pins;
    std::jthread m_thread;
};

} // namespace avi
