// CBasePin's way to a connection and back.
#include <optional>

#include "dshow/am_media_type.h"
#include "dshow/base_pin.h"
#include "dshow/com_guard.h"

namespace {

// Refusals that say no more than that the type does not suit.
bool IsPlainRefusal(HRESULT hr) {
    return SUCCEEDED(hr) || hr == E_FAIL || hr == E_INVALIDARG;
}

// CheckMediaType's answer as the answer of a connection.
HRESULT TypeRefusal(HRESULT hr) {
    return IsPlainRefusal(hr) ? VFW_E_TYPE_NOT_ACCEPTED : hr;
}

// Of many failed attempts, the first that says more than "wrong type" is worth reporting.
bool IsWorthReporting(HRESULT hr) {
    return !IsPlainRefusal(hr) && hr != VFW_E_TYPE_NOT_ACCEPTED && hr != VFW_E_NO_ACCEPTABLE_TYPES;
}

// The enumerator's next type, or none at its end.
std::optional<CMediaType> NextType(IEnumMediaTypes& types) {
    AM_MEDIA_TYPE* raw = nullptr;
    ULONG fetched = 0;
    if (types.Next(1, &raw, &fetched) != S_OK || raw == nullptr) {
        return std::nullopt;
    }
    HRESULT hr = S_OK;
    CMediaType type(*raw, &hr);
    DeleteMediaType(raw);
    if (FAILED(hr)) {
        throw std::bad_alloc();
    }
    return type;
}

} // namespace

HRESULT CBasePin::CheckCanConnect() const {
    if (m_Connected) {
        return VFW_E_ALREADY_CONNECTED;
    }
    return !IsStopped() && !m_bCanReconnectWhenActive ? VFW_E_NOT_STOPPED : S_OK;
}

HRESULT CBasePin::Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt) noexcept {
    if (pReceivePin == nullptr) {
        return E_POINTER;
    }
    const CAutoLock lock(m_pLock);
    const HRESULT possible = CheckCanConnect();
    if (FAILED(possible)) {
        return possible;
    }
    const HRESULT hr = ComGuard([&] {
        m_pLock->AssertHeld();
        if (pmt == nullptr) {
            return AgreeMediaType(pReceivePin, nullptr);
        }
        const CMediaType type(*pmt);
        return AgreeMediaType(pReceivePin, &type);
    });
    if (FAILED(hr)) {
        AbandonConnection();
    }
    return hr;
}

HRESULT CBasePin::AgreeMediaType(IPin* pReceivePin, const CMediaType* pmt) {
    if (pmt != nullptr && !pmt->IsPartiallySpecified()) {
        return AttemptConnection(pReceivePin, pmt);
    }
    HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
    IPin* const mine = this;
    IPin* const proposers[] = {m_bTryMyTypesFirst ? mine : pReceivePin, m_bTryMyTypesFirst ? pReceivePin : mine};
    for (IPin* const proposer : proposers) {
        win::ComPtr<IEnumMediaTypes> types;
        if (FAILED(proposer->EnumMediaTypes(types.Put())) || !types) {
            continue;
        }
        const HRESULT hr = TryMediaTypes(pReceivePin, pmt, types.Get());
        if (SUCCEEDED(hr)) {
            return S_OK;
        }
        if (failure == VFW_E_NO_ACCEPTABLE_TYPES && IsWorthReporting(hr)) {
            failure = hr;
        }
    }
    return failure;
}

HRESULT CBasePin::TryMediaTypes(IPin* pReceivePin, const CMediaType* pmt, IEnumMediaTypes* pEnum) {
    const HRESULT reset = pEnum->Reset();
    if (FAILED(reset)) {
        return reset;
    }
    HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
    while (const std::optional<CMediaType> type = NextType(*pEnum)) {
        if (pmt != nullptr && !type->MatchesPartial(pmt)) {
            continue;
        }
        const HRESULT hr = AttemptConnection(pReceivePin, &*type);
        if (SUCCEEDED(hr)) {
            return S_OK;
        }
        if (failure == VFW_E_NO_ACCEPTABLE_TYPES && IsWorthReporting(hr)) {
            failure = hr;
        }
    }
    return failure;
}

HRESULT CBasePin::AttemptConnection(IPin* pReceivePin, const CMediaType* pmt) {
    const HRESULT hr = OfferConnection(pReceivePin, pmt);
    if (FAILED(hr)) {
        AbandonConnection();
    }
    return hr;
}

// Ours alone: the peer is not told yet, or has asked.
HRESULT CBasePin::TakePeer(IPin* peer, const CMediaType* pmt) {
    HRESULT hr = CheckConnect(peer);
    if (FAILED(hr)) {
        return hr;
    }
    hr = CheckMediaType(pmt);
    if (hr != S_OK) {
        return TypeRefusal(hr);
    }
    m_Connected = peer;
    return SetMediaType(pmt);
}

HRESULT CBasePin::OfferConnection(IPin* pReceivePin, const CMediaType* pmt) {
    HRESULT hr = TakePeer(pReceivePin, pmt);
    if (FAILED(hr)) {
        return hr;
    }
    hr = pReceivePin->ReceiveConnection(this, pmt);
    if (FAILED(hr)) {
        return hr;
    }
    hr = ComGuard([&] { return CompleteConnect(pReceivePin); });
    if (FAILED(hr)) {
        pReceivePin->Disconnect(); // it believes itself connected
    }
    return hr;
}

HRESULT CBasePin::ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) noexcept {
    if (pConnector == nullptr || pmt == nullptr) {
        return E_POINTER;
    }
    const CAutoLock lock(m_pLock);
    const HRESULT possible = CheckCanConnect();
    if (FAILED(possible)) {
        return possible;
    }
    const HRESULT hr = ComGuard([&] {
        m_pLock->AssertHeld();
        const CMediaType type(*pmt);
        return AcceptConnection(pConnector, &type);
    });
    if (FAILED(hr)) {
        AbandonConnection();
    }
    return hr;
}

HRESULT CBasePin::AcceptConnection(IPin* pConnector, const CMediaType* pmt) {
    const HRESULT hr = TakePeer(pConnector, pmt);
    return FAILED(hr) ? hr : CompleteConnect(pConnector);
}

// The hook still sees the peer that the connection was tried with.
void CBasePin::AbandonConnection() {
    (void)ComGuard([this] { return BreakConnect(); });
    m_Connected.Reset();
}

HRESULT CBasePin::Disconnect() noexcept {
    const CAutoLock lock(m_pLock);
    return IsStopped() ? DisconnectInternal() : VFW_E_NOT_STOPPED;
}

HRESULT CBasePin::DisconnectInternal() {
    if (!m_Connected) {
        return S_FALSE;
    }
    const HRESULT hr = ComGuard([this] { return BreakConnect(); });
    if (SUCCEEDED(hr)) {
        m_Connected.Reset();
        return S_OK;
    }
    return hr;
}

HRESULT CBasePin::CheckConnect(IPin* pPin) {
    PIN_DIRECTION direction{};
    const HRESULT hr = pPin->QueryDirection(&direction);
    if (FAILED(hr)) {
        return hr;
    }
    return direction == m_dir ? VFW_E_INVALID_DIRECTION : S_OK;
}

HRESULT CBasePin::BreakConnect() {
    return S_OK;
}

HRESULT CBasePin::CompleteConnect(IPin* /*pReceivePin*/) {
    return S_OK;
}
