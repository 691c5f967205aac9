// CBaseFilter's changes of state.
#include "dshow/base_filter.h"
#include "dshow/base_pin.h"
#include "dshow/com_guard.h"

// Calls for every connected pin in order, until one fails; that failure is returned.
template <typename Call>
HRESULT CBaseFilter::ForEachConnectedPin(Call call) {
    const int count = GetPinCount();
    for (int i = 0; i < count; ++i) {
        CBasePin* const pin = GetPin(i);
        if (pin == nullptr || !pin->IsConnected()) {
            continue;
        }
        const HRESULT hr = call(*pin);
        if (FAILED(hr)) {
            return hr;
        }
    }
    return S_OK;
}

// Every pin is stopped, whatever the others say; the first failure is returned.
HRESULT CBaseFilter::StopPins() {
    HRESULT first = S_OK;
    const HRESULT hr = ComGuard([&] {
        return ForEachConnectedPin([&first](CBasePin& pin) {
            const HRESULT stopped = ComGuard([&pin] { return pin.Inactive(); });
            if (SUCCEEDED(first) && FAILED(stopped)) {
                first = stopped;
            }
            return S_OK;
        });
    });
    return FAILED(first) ? first : hr;
}

// All connected pins or none.
HRESULT CBaseFilter::ActivatePins() {
    int activated = 0;
    const HRESULT hr = ComGuard([&] {
        return ForEachConnectedPin([&activated](CBasePin& pin) {
            const HRESULT active = pin.Active();
            activated += SUCCEEDED(active) ? 1 : 0;
            return active;
        });
    });
    if (SUCCEEDED(hr)) {
        return S_OK;
    }
    (void)ComGuard([&] {
        return ForEachConnectedPin([&activated](CBasePin& pin) {
            if (activated-- > 0) {
                (void)ComGuard([&pin] { return pin.Inactive(); });
            }
            return S_OK;
        });
    });
    return hr;
}

HRESULT CBaseFilter::RunPins(REFERENCE_TIME tStart) {
    return ComGuard([&] { return ForEachConnectedPin([tStart](CBasePin& pin) { return pin.Run(tStart); }); });
}

HRESULT CBaseFilter::Stop() noexcept {
    const CAutoLock lock(m_pLock);
    const HRESULT hr = m_State == State_Stopped ? S_OK : StopPins();
    m_State = State_Stopped; // also after a failure: nothing may keep a filter from stopping
    return hr;
}

HRESULT CBaseFilter::Pause() noexcept {
    const CAutoLock lock(m_pLock);
    if (m_State == State_Stopped) {
        const HRESULT hr = ActivatePins();
        if (FAILED(hr)) {
            return hr;
        }
    }
    m_State = State_Paused;
    return S_OK;
}

HRESULT CBaseFilter::Run(REFERENCE_TIME tStart) noexcept {
    const CAutoLock lock(m_pLock);
    m_tStart = tStart;
    if (m_State == State_Stopped) {
        const HRESULT hr = Pause();
        if (FAILED(hr)) {
            return hr;
        }
    }
    if (m_State != State_Running) {
        const HRESULT hr = RunPins(tStart);
        if (FAILED(hr)) {
            return hr;
        }
    }
    m_State = State_Running;
    return S_OK;
}
