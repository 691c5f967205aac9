#include "win/system_library.h"

#include <array>

namespace win {

HMODULE LoadLibraryByPath(const std::wstring& path) {
    return LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
}

// A name alone would also find whatever is loaded under that name already.
HMODULE LoadSystemLibrary(const std::wstring& name) {
    std::array<WCHAR, MAX_PATH> folder{};
    const UINT length = GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size()));
    return length == 0 || length >= folder.size() ? nullptr
                                                  : LoadLibraryByPath(std::wstring(folder.data()) + L"\\" + name);
}

} // namespace win
