// LoadedModule: the built QRX_MKVMuxer.ax, loaded from beside the test program as a host without registration does.
//
// Owner: itself; the module is unloaded when it goes. Threads: one. Errors: a missing export is a test failure.
#pragma once

#include <gtest/gtest.h>

#include "win/com_ptr.h"
#include "win/platform.h"
#include "win/wide_string.h"

class LoadedModule {
  public:
    LoadedModule() : m_module(LoadLibraryW(Path().c_str())) { EXPECT_NE(nullptr, m_module) << GetLastError(); }
    ~LoadedModule() { FreeLibrary(m_module); }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    [[nodiscard]] static WideString Path() {
        WCHAR buffer[MAX_PATH] = {};
        GetModuleFileNameW(nullptr, buffer, MAX_PATH);
        const WideString program = buffer;
        return program.substr(0, program.rfind(OLESTR('\\')) + 1) + OLESTR("QRX_MKVMuxer.ax");
    }

    HRESULT GetClassObject(REFCLSID clsid, REFIID iid, void** object) const {
        return Export<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>("DllGetClassObject")(clsid, iid, object);
    }
    HRESULT CanUnloadNow() const { return Export<HRESULT(WINAPI*)()>("DllCanUnloadNow")(); }
    HRESULT RegisterServer() const { return Export<HRESULT(WINAPI*)()>("DllRegisterServer")(); }
    HRESULT UnregisterServer() const { return Export<HRESULT(WINAPI*)()>("DllUnregisterServer")(); }

    [[nodiscard]] win::ComPtr<IClassFactory> Factory(REFCLSID clsid) const {
        win::ComPtr<IClassFactory> factory;
        EXPECT_EQ(S_OK, GetClassObject(clsid, IID_IClassFactory, factory.PutVoid()));
        return factory;
    }

  private:
    template <typename Function>
    [[nodiscard]] Function Export(const char* name) const {
        const FARPROC address = GetProcAddress(m_module, name);
        EXPECT_NE(nullptr, address) << name;
        return reinterpret_cast<Function>(reinterpret_cast<void*>(address));
    }

    HMODULE m_module;
};
