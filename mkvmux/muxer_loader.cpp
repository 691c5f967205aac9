#include "mkvmux/muxer_loader.h"

#include <string>

#include "include/qrx_mkvmuxer.h"
#include "mkvmux/failure.h"
#include "mkvmux/text.h"
#include "win/system_library.h"

namespace mkvmux {

namespace {

// The longest path that the system takes, in characters.
constexpr DWORD kMaxLongPathChars = 32768;

win::ComPtr<IBaseFilter> CreateRegistered() {
    win::ComPtr<IBaseFilter> filter;
    const HRESULT hr =
        CoCreateInstance(CLSID_MatroskaMuxer, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, filter.PutVoid());
    if (hr == REGDB_E_CLASSNOTREG) {
        throw Failure("the Quorlex Matroska Muxer is not registered (regsvr32 QRX_MKVMuxer.ax registers it, "
                      "--no-register does without)");
    }
    if (FAILED(hr)) {
        throw Failure("the Quorlex Matroska Muxer cannot be created: " + DescribeResult(hr));
    }
    return filter;
}

} // namespace

std::filesystem::path ProgramDirectory() {
    std::wstring path(kMaxLongPathChars, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), kMaxLongPathChars));
    return std::filesystem::path(path).parent_path();
}

win::ComPtr<IBaseFilter> MuxerLoader::Create(MuxerSource source) {
    return source == MuxerSource::Registry ? CreateRegistered() : CreateFromFile(ProgramDirectory() / kModuleFileName);
}

win::ComPtr<IBaseFilter> MuxerLoader::CreateFromFile(const std::filesystem::path& module) {
    const std::string name = Utf8FromWide(module.native());
    m_library.Reset(win::LoadLibraryByPath(module.native()));
    if (!m_library) {
        throw Failure(name + ": cannot be loaded: " + DescribeResult(HRESULT_FROM_WIN32(GetLastError())));
    }
    const auto getClassObject = win::EntryPoint<GetClassObjectFunction>(m_library.Get(), "DllGetClassObject");
    if (getClassObject == nullptr) {
        throw Failure(name + ": is no COM module");
    }
    win::ComPtr<IClassFactory> factory;
    HRESULT hr = getClassObject(CLSID_MatroskaMuxer, IID_IClassFactory, factory.PutVoid());
    win::ComPtr<IBaseFilter> filter;
    if (SUCCEEDED(hr)) {
        hr = factory->CreateInstance(nullptr, IID_IBaseFilter, filter.PutVoid());
    }
    if (FAILED(hr)) {
        throw Failure(name + ": the muxer cannot be created: " + DescribeResult(hr));
    }
    return filter;
}

} // namespace mkvmux
