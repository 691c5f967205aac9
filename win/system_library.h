// Libraries of the system, loaded from where the system keeps them: one of the same name beside the program, in the
// current folder or on the path is not asked.
//
// Threads: any. Errors: nullptr; GetLastError tells why.
#pragma once

#include <string>

#include "win/platform.h"

namespace win {

// By its whole path; what it needs comes from the system's folder alone.
[[nodiscard]] HMODULE LoadLibraryByPath(const std::wstring& path);
// By its name in the system's folder.
[[nodiscard]] HMODULE LoadSystemLibrary(const std::wstring& name);

// Through void*, since the system types every entry point alike.
template <typename Function>
[[nodiscard]] Function EntryPoint(HMODULE library, const char* name) {
    return library == nullptr ? nullptr
                              : reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

} // namespace win
