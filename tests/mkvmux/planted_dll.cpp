// A library that somebody has put beside a program under the name of another: where it is loaded it leaves a mark, a
// file beside it that is called like it and ".loaded".
#include <array>
#include <string>

#include <windows.h>

namespace {

void LeaveMark(HINSTANCE self) {
    std::array<wchar_t, MAX_PATH + 1> path{};
    GetModuleFileNameW(self, path.data(), static_cast<DWORD>(path.size()));
    const std::wstring mark = std::wstring(path.data()) + L".loaded";
    CloseHandle(CreateFileW(mark.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
}

} // namespace

// Of quartz.dll, so that a program that imports it starts, with the wrong one.
extern "C" __declspec(dllexport) DWORD WINAPI AMGetErrorTextW(HRESULT, wchar_t*, DWORD) {
    return 0;
}

extern "C" BOOL WINAPI DllMain(HINSTANCE self, DWORD reason, void* /*reserved*/) {
    if (reason == DLL_PROCESS_ATTACH) {
        LeaveMark(self);
    }
    return TRUE;
}
