#include "sources/base/source_filter.h"

#include "dshow/com_guard.h"

namespace source {

HRESULT CSourceFilter::Make(std::unique_ptr<PacketReader> reader, const GUID& classId, OpenedSource& opened) {
    return ComGuard([&] {
        HRESULT hr = S_OK;
        opened.streams = reader->Streams();
        auto* const filter = new CSourceFilter(std::move(reader), classId, &hr);
        opened.filter = win::ComPtr<IBaseFilter>(filter);
        opened.damage = filter->m_damage;
        return hr;
    });
}

CSourceFilter::CSourceFilter(std::unique_ptr<PacketReader> reader, const GUID& classId, HRESULT* phr)
    : CBaseFilter(OLESTR("Source"), nullptr, &m_lock, classId), m_reader(std::move(reader)) {
    for (const StreamDescription& stream : m_reader->Streams()) {
        if (stream.types.empty()) {
            m_pinOfStream.push_back(nullptr);
            continue;
        }
        m_pins.push_back(std::make_unique<CSourcePin>(this, &m_lock, phr, stream));
        m_pinOfStream.push_back(m_pins.back().get());
    }
}

CSourceFilter::~CSourceFilter() {
    StopStreaming();
}

CBasePin* CSourceFilter::GetPin(int index) {
    return index >= 0 && index < GetPinCount() ? m_pins[static_cast<size_t>(index)].get() : nullptr;
}

STDMETHODIMP CSourceFilter::Pause() noexcept {
    const CAutoLock lock(&m_lock);
    const bool wasStopped = m_State == State_Stopped;
    const HRESULT hr = CBaseFilter::Pause();
    return FAILED(hr) || !wasStopped ? hr : ComGuard([this, hr] {
        StartStreaming();
        return hr;
    });
}

// The lock is not held while the thread ends: the peers that it is in may need the graph's thread, not ours.
STDMETHODIMP CSourceFilter::Stop() noexcept {
    m_thread.request_stop();
    const HRESULT hr = CBaseFilter::Stop(); // frees a thread that waits for a buffer
    StopStreaming();
    return hr;
}

void CSourceFilter::StartStreaming() {
    m_thread = std::jthread([this](const std::stop_token& stop) { StreamGuarded(stop); });
}

void CSourceFilter::StopStreaming() {
    m_thread.request_stop();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void CSourceFilter::StreamGuarded(const std::stop_token& stop) noexcept {
    const HRESULT hr = ComGuard([&] {
        Stream(stop);
        return S_OK;
    });
    if (FAILED(hr)) {
        (void)ComGuard([&] { return NotifyEvent(EC_ERRORABORT, hr, 0); });
    }
}

void CSourceFilter::Stream(const std::stop_token& stop) {
    m_reader->Rewind();
    for (const auto& pin : m_pins) {
        pin->Begin();
    }
    HRESULT damage = S_OK;
    Packet packet;
    while (!stop.stop_requested() && m_reader->Next(packet)) {
        if (CSourcePin* const pin = m_pinOfStream[packet.stream]) {
            const HRESULT hr = pin->DeliverPacket(packet);
            damage = FAILED(hr) ? hr : damage;
        }
    }
    if (stop.stop_requested()) {
        return;
    }
    damage = FAILED(damage) ? damage : m_reader->Damage();
    if (FAILED(damage)) {
        *m_damage = damage;
        NotifyEvent(EC_STREAM_ERROR_STILLPLAYING, damage, 0); // before the end, which may end the run
    }
    for (const auto& pin : m_pins) {
        pin->DeliverEnd();
    }
}

} // namespace source
