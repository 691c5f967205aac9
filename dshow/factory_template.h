// What a module offers and registers, as tables of data: one CFactoryTemplate a class, and the setup records that
// describe a filter to the filter mapper.
#pragma once

#include <cstddef>
#include <span>

#include "dshow/unknown.h"
#include "win/platform.h"

using AMOVIESETUP_MEDIATYPE = REGPINTYPES;
using AMOVIESETUP_PIN = REGFILTERPINS;

struct AMOVIESETUP_FILTER {
    const CLSID* clsID;
    const WCHAR* strName;
    DWORD dwMerit;
    UINT nPins;
    const AMOVIESETUP_PIN* lpPin;
};
using LPAMOVIESETUP_FILTER = AMOVIESETUP_FILTER*;

class CFactoryTemplate {
  public:
    const WCHAR* m_Name;
    const CLSID* m_ClsID;
    LPFNNewCOMObject m_lpfnNew;
    LPFNInitRoutine m_lpfnInit;
    const AMOVIESETUP_FILTER* m_pAMovieSetup_Filter;

    BOOL IsClassID(REFCLSID rclsid) const { return *m_ClsID == rclsid; }
    CUnknown* CreateInstance(LPUNKNOWN pUnk, HRESULT* phr) const { return m_lpfnNew(pUnk, phr); }
};

// The module's table; whoever links the module functions defines it.
extern CFactoryTemplate g_Templates[];
extern int g_cTemplates;

inline std::span<const CFactoryTemplate> FactoryTemplates() {
    return {g_Templates, static_cast<size_t>(g_cTemplates)};
}
