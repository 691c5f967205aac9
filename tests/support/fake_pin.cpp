#include "tests/support/fake_pin.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "tests/support/fake_enumerators.h"
#include "tests/support/system_code.h"

namespace test_support {

FakePin::FakePin(PIN_DIRECTION direction, WideString name, std::vector<MediaTypeValue> types)
    : m_direction(direction), m_name(std::move(name)), m_types(std::move(types)) {}

void FakePin::SetPeer(IPin* peer, const AM_MEDIA_TYPE& type) {
    const SystemCode notTheProduct;
    m_peer = peer;
    m_connectedType = MediaTypeValue(type);
}

void FakePin::ClearPeer() {
    OnDisconnected();
    m_peer.Reset();
    m_connectedType = {};
}

void FakePin::Unplug() {
    if (const win::ComPtr<IPin> peer = m_peer) {
        peer->Disconnect();
        Disconnect();
    }
}

HRESULT FakePin::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    IUnknown* const found = FindInterface(iid);
    *object = found;
    if (found == nullptr) {
        return E_NOINTERFACE;
    }
    found->AddRef();
    return S_OK;
}

HRESULT FakePin::Connect(IPin*, const AM_MEDIA_TYPE*) {
    return VFW_E_INVALID_DIRECTION;
}

HRESULT FakePin::ReceiveConnection(IPin*, const AM_MEDIA_TYPE*) {
    return VFW_E_INVALID_DIRECTION;
}

HRESULT FakePin::Disconnect() {
    if (!m_peer) {
        return S_FALSE;
    }
    ClearPeer();
    return S_OK;
}

HRESULT FakePin::ConnectedTo(IPin** pin) {
    if (pin == nullptr) {
        return E_POINTER;
    }
    m_peer.CopyTo(pin);
    return m_peer ? S_OK : VFW_E_NOT_CONNECTED;
}

HRESULT FakePin::ConnectionMediaType(AM_MEDIA_TYPE* type) {
    if (type == nullptr) {
        return E_POINTER;
    }
    *type = {};
    return m_peer ? CopyToTaskMemory(m_connectedType.Get(), type) : VFW_E_NOT_CONNECTED;
}

HRESULT FakePin::QueryPinInfo(PIN_INFO* info) {
    if (info == nullptr) {
        return E_POINTER;
    }
    *info = {};
    m_filter.AddRef();
    info->pFilter = &m_filter;
    info->dir = m_direction;
    const size_t length = std::min(m_name.size(), std::size(info->achName) - 1);
    std::copy_n(m_name.begin(), length, info->achName);
    return S_OK;
}

HRESULT FakePin::QueryDirection(PIN_DIRECTION* direction) {
    if (direction == nullptr) {
        return E_POINTER;
    }
    *direction = m_direction;
    return S_OK;
}

HRESULT FakePin::QueryId(LPWSTR* id) {
    if (id == nullptr) {
        return E_POINTER;
    }
    *id = static_cast<WCHAR*>(CoTaskMemAlloc((m_name.size() + 1) * sizeof(WCHAR)));
    if (*id == nullptr) {
        return E_OUTOFMEMORY;
    }
    std::copy_n(m_name.c_str(), m_name.size() + 1, *id);
    return S_OK;
}

HRESULT FakePin::QueryAccept(const AM_MEDIA_TYPE* type) {
    if (type == nullptr) {
        return E_POINTER;
    }
    const auto same = [type](const MediaTypeValue& own) { return SameMediaType(own.Get(), *type); };
    return std::any_of(m_types.begin(), m_types.end(), same) ? S_OK : S_FALSE;
}

HRESULT FakePin::EnumMediaTypes(IEnumMediaTypes** types) {
    if (types == nullptr) {
        return E_POINTER;
    }
    const SystemCode notTheProduct;
    *types = MakeMediaTypeEnumerator(this, m_types);
    return S_OK;
}

HRESULT FakePin::QueryInternalConnections(IPin**, ULONG*) {
    return E_NOTIMPL; // every input leads to every output
}

HRESULT FakePin::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double) {
    return S_OK;
}

} // namespace test_support
