// MuxerLoader: makes the muxer filter, from the registered module or from the file beside the program.
//
// Owner: must outlive every object that the module made. Errors: Failure.
#pragma once

#include <filesystem>

#include "win/com_ptr.h"
#include "win/handle.h"
#include "win/platform.h"

namespace mkvmux {

inline constexpr const wchar_t* kModuleFileName = L"QRX_MKVMuxer.ax";

// What the module exports as DllGetClassObject.
using GetClassObjectFunction = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);

enum class MuxerSource { Registry, BesideProgram };

class MuxerLoader {
  public:
    [[nodiscard]] win::ComPtr<IBaseFilter> Create(MuxerSource source);

  private:
    struct LibraryPolicy {
        using Type = HMODULE;
        static Type Invalid() { return nullptr; }
        static void Close(Type library) { FreeLibrary(library); }
    };

    [[nodiscard]] win::ComPtr<IBaseFilter> CreateFromFile(const std::filesystem::path& module);

    win::UniqueHandle<LibraryPolicy> m_library;
};

// The directory of the running program.
[[nodiscard]] std::filesystem::path ProgramDirectory();

} // namespace mkvmux
