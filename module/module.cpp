// The module's classes, as the table that creation and registration read, and its exports.
#include <qrx_mkvmuxer.h>

#include "dshow/factory_template.h"
#include "dshow/module_functions.h"
#include "dshow/registration.h"
#include "matroska_muxer/matroska_muxer.h"
#include "settings/settings_store.h"
#include "ui/about_prop_page.h"
#include "ui/property_prop_page.h"
#include "win/module_instance.h"

namespace {

const AMOVIESETUP_MEDIATYPE kInputTypes[] = {{&MEDIATYPE_Video, &GUID_NULL}, {&MEDIATYPE_Audio, &GUID_NULL}};
const AMOVIESETUP_MEDIATYPE kOutputTypes[] = {{&MEDIATYPE_Stream, &GUID_NULL}};

WCHAR g_inputName[] = OLESTR("Input");
WCHAR g_outputName[] = OLESTR("Output");

// For the filter mapper only: the live pins have names of their own, and accept more than is registered.
// Columns: name, rendered, output, zero, many, connects to filter, connects to pin, types.
const AMOVIESETUP_PIN kPins[] = {
    {g_inputName, FALSE, FALSE, FALSE, TRUE, &GUID_NULL, nullptr, 2, kInputTypes},
    {g_outputName, FALSE, TRUE, FALSE, FALSE, &GUID_NULL, nullptr, 1, kOutputTypes},
};

const AMOVIESETUP_FILTER kFilter = {&CLSID_MatroskaMuxer, OLESTR("Quorlex Matroska Muxer"), MERIT_DO_NOT_USE, 2, kPins};

} // namespace

// Every row carries the filter's setup data, so registration files the filter once a row, each time alike.
CFactoryTemplate g_Templates[] = {
    {kFilter.strName, &CLSID_MatroskaMuxer, CMatroskaMuxer::CreateInstance, nullptr, &kFilter},
    {OLESTR("MKV Muxer about page"), &CLSID_MKVMuxerAboutPage, CAboutPropPage::CreateInstance, nullptr, &kFilter},
    {OLESTR("MKV Muxer property page"), &CLSID_MKVMuxerPropertyPage, CPropertyPropPage::CreateInstance, nullptr,
     &kFilter},
};
int g_cTemplates = static_cast<int>(sizeof(g_Templates) / sizeof(g_Templates[0]));

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* object) {
    return AMovieDllGetClassObject(clsid, iid, object);
}

STDAPI DllCanUnloadNow() {
    return AMovieDllCanUnloadNow();
}

STDAPI DllRegisterServer() {
    return AMovieDllRegisterServer2(TRUE);
}

STDAPI DllUnregisterServer() {
    return AMovieDllRegisterServer2(FALSE);
}

#if defined(__GNUC__)
namespace __gnu_cxx {

// Of the C++ runtime, which declares it in no header: gives back the memory that it keeps for exceptions thrown when
// there is none. It takes that when it is loaded; a host that unloads the module would lose 71 KiB each time.
void __freeres();

} // namespace __gnu_cxx
#endif

// reserved: set on detach when the process is ending; the settings stay then, for COM may be gone already.
extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
    if (reason == DLL_PROCESS_ATTACH) {
        win::SetModuleInstance(instance);
        if (!CreateSettingsStore()) {
            return FALSE;
        }
    } else if (reason == DLL_PROCESS_DETACH && reserved == nullptr) {
        DestroySettingsStore();
#if defined(__GNUC__)
        __gnu_cxx::__freeres();
#endif
    }
    return AMovieDllEntry(instance, reason);
}
