#include "mkvmux/property_pages.h"

#include <vector>

#include <olectl.h>

#include "mkvmux/failure.h"
#include "mkvmux/muxer_loader.h"
#include "mkvmux/text.h"
#include "win/com_ptr.h"
#include "win/system_library.h"

namespace mkvmux {

namespace {

constexpr const wchar_t* kCaption = L"Quorlex Matroska Muxer";
constexpr UINT kOffsetPixels = 40; // from the corner of the screen

// Makes a class of the loaded module known to this process, for as long as the object lives.
class ClassOfLoadedModule {
  public:
    ClassOfLoadedModule(GetClassObjectFunction getClassObject, REFCLSID clsid) {
        win::ComPtr<IUnknown> factory;
        if (SUCCEEDED(getClassObject(clsid, IID_IUnknown, factory.PutVoid()))) {
            m_known = SUCCEEDED(
                CoRegisterClassObject(clsid, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &m_cookie));
        }
    }
    ClassOfLoadedModule(ClassOfLoadedModule&& other) noexcept
        : m_cookie(other.m_cookie), m_known(std::exchange(other.m_known, false)) {}
    ~ClassOfLoadedModule() {
        if (m_known) {
            CoRevokeClassObject(m_cookie);
        }
    }
    ClassOfLoadedModule(const ClassOfLoadedModule&) = delete;
    ClassOfLoadedModule& operator=(const ClassOfLoadedModule&) = delete;
    ClassOfLoadedModule& operator=(ClassOfLoadedModule&&) = delete;

  private:
    DWORD m_cookie = 0;
    bool m_known = false;
};

// A module of another name is a registered one, whose pages the system finds by itself.
std::vector<ClassOfLoadedModule> MakeKnown(const CAUUID& pages) {
    std::vector<ClassOfLoadedModule> classes;
    const HMODULE module = GetModuleHandleW(kModuleFileName);
    if (module == nullptr) {
        return classes;
    }
    const auto getClassObject = win::EntryPoint<GetClassObjectFunction>(module, "DllGetClassObject");
    for (ULONG page = 0; getClassObject != nullptr && page < pages.cElems; ++page) {
        classes.emplace_back(getClassObject, pages.pElems[page]);
    }
    return classes;
}

} // namespace

void ShowPropertyPages(IBaseFilter* muxer) {
    win::ComPtr<ISpecifyPropertyPages> specifies;
    HRESULT hr = muxer->QueryInterface(IID_ISpecifyPropertyPages, specifies.PutVoid());
    CAUUID pages{};
    if (SUCCEEDED(hr)) {
        hr = specifies->GetPages(&pages);
    }
    if (SUCCEEDED(hr)) {
        SetProcessDPIAware(); // sharp at every resolution
        const auto classes = MakeKnown(pages);
        IUnknown* object = muxer;
        hr = OleCreatePropertyFrame(nullptr, kOffsetPixels, kOffsetPixels, kCaption, 1, &object, pages.cElems,
                                    pages.pElems, LOCALE_USER_DEFAULT, 0, nullptr);
        CoTaskMemFree(pages.pElems);
    }
    if (FAILED(hr)) {
        throw Failure("--properties: the property pages cannot be shown: " + DescribeResult(hr));
    }
}

} // namespace mkvmux
