// A module's entries in the registry, from its table g_Templates: COM classes, and filters in the filter mapper.
// Windows only.
//
// Errors: the first failure; one of the registry is made an HRESULT from its Win32 code.
#pragma once

#include "win/platform.h"

// Registers everything, or removes everything, filters first. What is not there to be removed is no failure.
HRESULT AMovieDllRegisterServer2(BOOL bRegister) noexcept;
