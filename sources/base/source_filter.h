// CSourceFilter: a source filter that pushes the packets of a PacketReader, one pin a stream that has a media type.
//
// Owner: its references. Threads: one thread delivers the packets of all streams in the order of the input.
// Errors: damage is told to the graph as EC_STREAM_ERROR_STILLPLAYING, lack of memory as EC_ERRORABORT.
#pragma once

#include <memory>
#include <stop_token>
#include <thread>
#include <vector>

#include "dshow/base_filter.h"
#include "sources/base/opened_source.h"
#include "sources/base/source_pin.h"

namespace source {

class CSourceFilter final : public CBaseFilter {
  public:
    [[nodiscard]] static HRESULT Make(std::unique_ptr<PacketReader> reader, const GUID& classId, OpenedSource& opened);
    ~CSourceFilter() override;

    // CBaseFilter
    int GetPinCount() override { return static_cast<int>(m_pins.size()); }
    CBasePin* GetPin(int index) override;
    STDMETHODIMP Pause() noexcept override;
    STDMETHODIMP Stop() noexcept override;

  private:
    CSourceFilter(std::unique_ptr<PacketReader> reader, const GUID& classId, HRESULT* phr);
    void StreamGuarded(const std::stop_token& stop) noexcept;
    void Stream(const std::stop_token& stop);
    void StartStreaming();
    void StopStreaming();

    CCritSec m_lock;
    const std::unique_ptr<PacketReader> m_reader;
    std::vector<std::unique_ptr<CSourcePin>> m_pins;
    std::vector<CSourcePin*> m_pinOfStream; // null for a stream without a pin
    const std::shared_ptr<std::atomic<HRESULT>> m_damage = std::make_shared<std::atomic<HRESULT>>(S_OK);
    std::jthread m_thread;
};

} // namespace source
