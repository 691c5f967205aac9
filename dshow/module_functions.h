// What a module's exports do, over its table g_Templates.
//
// Threads: any; AMovieDllEntry as the loader calls it.
#pragma once

#include "win/platform.h"

// DllGetClassObject
HRESULT AMovieDllGetClassObject(REFCLSID rClsID, REFIID riid, void** pv) noexcept;
// DllCanUnloadNow
HRESULT AMovieDllCanUnloadNow() noexcept;
// DllMain: records the instance handle on attach, and runs the templates' init routines on attach and detach.
BOOL AMovieDllEntry(HINSTANCE hInstance, DWORD ulReason) noexcept;
