#include "dshow/registration.h"

#include <string>

#include "dshow/com_guard.h"
#include "dshow/filter_setup.h"
#include "win/com_apartment.h"
#include "win/com_ptr.h"
#include "win/handle.h"
#include "win/module_instance.h"

namespace {

struct RegistryKeyPolicy {
    using Type = HKEY;
    static Type Invalid() { return nullptr; }
    static void Close(Type key) { RegCloseKey(key); }
};
using RegistryKey = win::UniqueHandle<RegistryKeyPolicy>;

HRESULT FromWin32(LSTATUS status) {
    return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT ModuleFileName(std::wstring& name) {
    constexpr DWORD kLongestPath = 32768; // code units, with the terminator
    name.resize(kLongestPath);
    const DWORD length = GetModuleFileNameW(win::ModuleInstance(), name.data(), kLongestPath);
    if (length == 0) {
        return HRESULT_FROM_WIN32(GetLastError());
    }
    if (length == kLongestPath) {
        return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
    }
    name.resize(length);
    return S_OK;
}

std::wstring ClassKey(REFCLSID clsid) {
    constexpr int kTextLength = 39; // {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX} and the terminator
    wchar_t text[kTextLength] = {};
    StringFromGUID2(clsid, text, kTextLength);
    return std::wstring(L"CLSID\\") + text;
}

HRESULT CreateKey(HKEY parent, const std::wstring& path, RegistryKey& key) {
    return FromWin32(RegCreateKeyExW(parent, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr,
                                     key.Put(), nullptr));
}

// A null name is the key's default value.
HRESULT SetText(const RegistryKey& key, const wchar_t* name, const std::wstring& text) {
    const auto bytes = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    return FromWin32(RegSetValueExW(key.Get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), bytes));
}

HRESULT RegisterClassKeys(const CFactoryTemplate& entry, const std::wstring& fileName) {
    RegistryKey classKey;
    RegistryKey serverKey;
    HRESULT hr = CreateKey(HKEY_CLASSES_ROOT, ClassKey(*entry.m_ClsID), classKey);
    if (SUCCEEDED(hr)) {
        hr = SetText(classKey, nullptr, entry.m_Name);
    }
    if (SUCCEEDED(hr)) {
        hr = CreateKey(classKey.Get(), L"InprocServer32", serverKey);
    }
    if (SUCCEEDED(hr)) {
        hr = SetText(serverKey, nullptr, fileName);
    }
    return FAILED(hr) ? hr : SetText(serverKey, L"ThreadingModel", L"Both");
}

HRESULT RemoveClassKeys(const CFactoryTemplate& entry) {
    const LSTATUS status = RegDeleteTreeW(HKEY_CLASSES_ROOT, ClassKey(*entry.m_ClsID).c_str());
    return status == ERROR_FILE_NOT_FOUND ? S_OK : FromWin32(status);
}

HRESULT RegisterModule() {
    std::wstring fileName;
    HRESULT hr = ModuleFileName(fileName);
    for (const CFactoryTemplate& entry : FactoryTemplates()) {
        if (SUCCEEDED(hr)) {
            hr = RegisterClassKeys(entry, fileName);
        }
    }
    for (const CFactoryTemplate& entry : FactoryTemplates()) {
        if (SUCCEEDED(hr) && entry.m_pAMovieSetup_Filter != nullptr) {
            hr = AMovieSetupRegisterFilter(entry.m_pAMovieSetup_Filter, TRUE);
        }
    }
    return hr;
}

// Removes all that it can; the first failure is reported.
HRESULT UnregisterModule() {
    HRESULT first = S_OK;
    const auto note = [&first](HRESULT hr) { first = SUCCEEDED(first) && FAILED(hr) ? hr : first; };
    for (const CFactoryTemplate& entry : FactoryTemplates()) {
        if (entry.m_pAMovieSetup_Filter != nullptr) {
            note(AMovieSetupRegisterFilter(entry.m_pAMovieSetup_Filter, FALSE));
        }
    }
    for (const CFactoryTemplate& entry : FactoryTemplates()) {
        note(RemoveClassKeys(entry));
    }
    return first;
}

} // namespace

HRESULT AMovieDllRegisterServer2(BOOL bRegister) noexcept {
    return ComGuard([bRegister] {
        // A thread that is in another apartment already will do as well.
        const win::ComApartment apartment(CoInitialize(nullptr));
        const HRESULT hr = bRegister ? RegisterModule() : UnregisterModule();
        return FAILED(hr) ? hr : S_OK;
    });
}
