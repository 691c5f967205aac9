#include "tools/avi_source/avi_source_filter.h"

#include "dshow/com_guard.h"
#include "tools/avi_source/file_source.h"

namespace avi {

namespace {

// Registered nowhere. {8E6A2D14-57C3-4F0B-A9B1-6D23C8E5F470}
constexpr GUID kAviSourceClassId{0x8e6a2d14, 0x57c3, 0x4f0b, {0xa9, 0xb1, 0x6d, 0x23, 0xc8, 0xe5, 0xf4, 0x70}};

// "Stream 00", as the system's own splitter calls it.
WideString PinName(size_t index) {
    const WideString number = ToWideDecimal(index);
    return WideString(OLESTR("Stream ")) + (number.size() < 2 ? OLESTR("0") : OLESTR("")) + number;
}

} // namespace

HRESULT CAviSource::Make(std::unique_ptr<ByteSource> source, win::ComPtr<IBaseFilter>& filter) {
    return ComGuard([&] {
        std::optional<AviFile> file = ReadAviFile(*source);
        if (!file) {
            return static_cast<HRESULT>(VFW_E_INVALID_FILE_FORMAT);
        }
        HRESULT hr = S_OK;
        filter = win::ComPtr<IBaseFilter>(new CAviSource(std::move(source), std::move(*file), &hr));
        return hr;
    });
}

HRESULT CAviSource::Open(const WideString& path, win::ComPtr<IBaseFilter>& filter) {
    auto source = std::make_unique<FileSource>();
    const HRESULT hr = source->Open(path);
    return FAILED(hr) ? hr : Make(std::move(source), filter);
}

CAviSource::CAviSource(std::unique_ptr<ByteSource> source, AviFile file, HRESULT* phr)
    : CBaseFilter(OLESTR("AviSource"), nullptr, &m_lock, kAviSourceClassId), m_source(std::move(source)),
      m_file(std::move(file)) {
    for (const AviStream& stream : m_file.streams) {
        m_pins.push_back(std::make_unique<CAviSourcePin>(this, &m_lock, phr, stream, PinName(m_pins.size())));
    }
}

CAviSource::~CAviSource() {
    StopStreaming();
}

CBasePin* CAviSource::GetPin(int index) {
    return index >= 0 && index < GetPinCount() ? m_pins[static_cast<size_t>(index)].get() : nullptr;
}

STDMETHODIMP CAviSource::Pause() noexcept {
    const CAutoLock lock(&m_lock);
    const bool wasStopped = m_State == State_Stopped;
    const HRESULT hr = CBaseFilter::Pause();
    return FAILED(hr) || !wasStopped ? hr : ComGuard([this, hr] {
        StartStreaming();
        return hr;
    });
}

// The lock is not held while the thread ends: the peers that it is in may need the graph's thread, not ours.
STDMETHODIMP CAviSource::Stop() noexcept {
    m_thread.request_stop();
    const HRESULT hr = CBaseFilter::Stop(); // frees a thread that waits for a buffer
    StopStreaming();
    return hr;
}

void CAviSource::StartStreaming() {
    for (const auto& pin : m_pins) {
        pin->Rewind();
    }
    m_thread = std::jthread([this](const std::stop_token& stop) { Stream(stop); });
}

void CAviSource::StopStreaming() {
    m_thread.request_stop();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void CAviSource::Stream(const std::stop_token& stop) {
    for (const AviChunk& chunk : m_file.chunks) {
        if (stop.stop_requested()) {
            return;
        }
        m_pins[chunk.stream]->DeliverChunk(*m_source, chunk);
    }
    for (const auto& pin : m_pins) {
        pin->DeliverEnd();
    }
}

} // namespace avi
