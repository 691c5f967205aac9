#include "tests/support/fake_filter.h"

#include "tests/support/fake_enumerators.h"

namespace test_support {

HRESULT FakeFilter::QueryInterface(REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    if (iid != IID_IUnknown && iid != IID_IPersist && iid != IID_IMediaFilter && iid != IID_IBaseFilter) {
        return E_NOINTERFACE;
    }
    *object = static_cast<IBaseFilter*>(this);
    AddRef();
    return S_OK;
}

HRESULT FakeFilter::GetClassID(CLSID* classId) {
    if (classId == nullptr) {
        return E_POINTER;
    }
    *classId = {};
    return S_OK;
}

HRESULT FakeFilter::Stop() {
    m_state = State_Stopped;
    return S_OK;
}

HRESULT FakeFilter::Pause() {
    m_state = State_Paused;
    return S_OK;
}

HRESULT FakeFilter::Run(REFERENCE_TIME) {
    m_state = State_Running;
    return S_OK;
}

HRESULT FakeFilter::GetState(DWORD, FILTER_STATE* state) {
    if (state == nullptr) {
        return E_POINTER;
    }
    *state = m_state;
    return S_OK;
}

HRESULT FakeFilter::SetSyncSource(IReferenceClock*) {
    return S_OK; // never read
}

HRESULT FakeFilter::GetSyncSource(IReferenceClock** clock) {
    if (clock == nullptr) {
        return E_POINTER;
    }
    *clock = nullptr;
    return S_OK;
}

HRESULT FakeFilter::EnumPins(IEnumPins** pins) {
    if (pins == nullptr) {
        return E_POINTER;
    }
    *pins = MakePinEnumerator(m_pin);
    return S_OK;
}

HRESULT FakeFilter::FindPin(LPCWSTR, IPin** pin) {
    if (pin == nullptr) {
        return E_POINTER;
    }
    *pin = nullptr;
    return VFW_E_NOT_FOUND;
}

HRESULT FakeFilter::QueryFilterInfo(FILTER_INFO* info) {
    if (info == nullptr) {
        return E_POINTER;
    }
    *info = {};
    info->pGraph = m_graph;
    if (m_graph != nullptr) {
        m_graph->AddRef();
    }
    return S_OK;
}

HRESULT FakeFilter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR) {
    m_graph = graph;
    return S_OK;
}

HRESULT FakeFilter::QueryVendorInfo(LPWSTR* vendorInfo) {
    if (vendorInfo == nullptr) {
        return E_POINTER;
    }
    *vendorInfo = nullptr;
    return E_NOTIMPL;
}

} // namespace test_support
