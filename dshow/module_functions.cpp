#include "dshow/module_functions.h"

#include <algorithm>
#include <new>

#include "dshow/class_factory.h"
#include "dshow/factory_template.h"
#include "win/module_instance.h"

namespace {

void RunInitRoutines(BOOL loading) {
    for (const CFactoryTemplate& entry : FactoryTemplates()) {
        if (entry.m_lpfnInit != nullptr) {
            entry.m_lpfnInit(loading, entry.m_ClsID);
        }
    }
}

} // namespace

HRESULT AMovieDllGetClassObject(REFCLSID rClsID, REFIID riid, void** pv) noexcept {
    if (pv == nullptr) {
        return E_POINTER;
    }
    *pv = nullptr;
    if (riid != IID_IUnknown && riid != IID_IClassFactory) {
        return E_NOINTERFACE;
    }
    const auto templates = FactoryTemplates();
    const auto found = std::find_if(templates.begin(), templates.end(),
                                    [&rClsID](const CFactoryTemplate& entry) { return entry.IsClassID(rClsID); });
    if (found == templates.end()) {
        return CLASS_E_CLASSNOTAVAILABLE;
    }
    auto* const factory = new (std::nothrow) CClassFactory(&*found);
    if (factory == nullptr) {
        return E_OUTOFMEMORY;
    }
    return GetInterface(static_cast<IClassFactory*>(factory), pv); // the caller's reference frees it
}

HRESULT AMovieDllCanUnloadNow() noexcept {
    return CClassFactory::IsLocked() || CBaseObject::ObjectsActive() > 0 ? S_FALSE : S_OK;
}

BOOL AMovieDllEntry(HINSTANCE hInstance, DWORD ulReason) noexcept {
    // Notifications of threads stay on: the statically linked run-time library frees its thread data with them.
    if (ulReason == DLL_PROCESS_ATTACH) {
        win::SetModuleInstance(hInstance);
        RunInitRoutines(TRUE);
    } else if (ulReason == DLL_PROCESS_DETACH) {
        RunInitRoutines(FALSE);
    }
    return TRUE;
}
