#include "dshow/pos_pass_thru.h"

#include "win/com_ptr.h"

HRESULT CreatePosPassThru(LPUNKNOWN pAgg, BOOL bRenderer, IPin* pPin, IUnknown** ppPassThru) noexcept {
    if (ppPassThru == nullptr) {
        return E_POINTER;
    }
    *ppPassThru = nullptr;
    if (pPin == nullptr) {
        return E_POINTER;
    }
    win::ComPtr<IUnknown> object;
    HRESULT hr = CoCreateInstance(CLSID_SeekingPassThru, pAgg, CLSCTX_INPROC_SERVER, IID_IUnknown, object.PutVoid());
    if (FAILED(hr)) {
        return hr;
    }
    win::ComPtr<ISeekingPassThru> passThru;
    hr = object->QueryInterface(IID_ISeekingPassThru, passThru.PutVoid());
    if (SUCCEEDED(hr)) {
        hr = passThru->Init(bRenderer, pPin);
    }
    if (SUCCEEDED(hr)) {
        *ppPassThru = object.Detach();
    }
    return hr;
}
