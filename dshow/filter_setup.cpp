#include "dshow/filter_setup.h"

#include "win/com_ptr.h"

namespace {

constexpr DWORD kPinsWithoutMediums = 1; // the REGFILTER2 version whose pins are REGFILTERPINS

HRESULT RegisterInMapper(const AMOVIESETUP_FILTER& setup, IFilterMapper2& mapper) {
    REGFILTER2 filter{};
    filter.dwVersion = kPinsWithoutMediums;
    filter.dwMerit = setup.dwMerit;
    filter.cPins = setup.nPins;
    filter.rgPins = setup.lpPin;
    return mapper.RegisterFilter(*setup.clsID, setup.strName, nullptr, nullptr, nullptr, &filter);
}

HRESULT UnregisterInMapper(const AMOVIESETUP_FILTER& setup, IFilterMapper2& mapper) {
    const HRESULT hr = mapper.UnregisterFilter(nullptr, nullptr, *setup.clsID);
    return hr == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) ? S_OK : hr;
}

} // namespace

HRESULT AMovieSetupRegisterFilter2(const AMOVIESETUP_FILTER* psetupdata, IFilterMapper2* pIFM2,
                                   BOOL bRegister) noexcept {
    if (psetupdata == nullptr) {
        return S_FALSE;
    }
    if (pIFM2 == nullptr) {
        return E_POINTER;
    }
    return bRegister ? RegisterInMapper(*psetupdata, *pIFM2) : UnregisterInMapper(*psetupdata, *pIFM2);
}

HRESULT AMovieSetupRegisterFilter(const AMOVIESETUP_FILTER* psetupdata, BOOL bRegister) noexcept {
    win::ComPtr<IFilterMapper2> mapper;
    const HRESULT hr =
        CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper2, mapper.PutVoid());
    return FAILED(hr) ? hr : AMovieSetupRegisterFilter2(psetupdata, mapper.Get(), bRegister);
}
