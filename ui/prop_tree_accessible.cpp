#include "ui/prop_tree_accessible.h"

#include <atomic>
#include <new>

#include <oleacc.h>

#include "dshow/base_object.h"
#include "dshow/com_guard.h"
#include "win/bstr.h"
#include "win/com_ptr.h"
#include "win/system_library.h"

namespace {

// Loaded when the first screen reader asks: without one nothing here needs it. Its interface is spelled __uuidof below,
// since the import library that tests link has a thunk of the identifier's name.
template <typename Function>
Function Accessibility(const char* name) {
    static const HMODULE library = win::LoadSystemLibrary(L"oleacc.dll");
    return win::EntryPoint<Function>(library, name);
}

// An object of the module: it stays loaded as long as a reader holds this.
class TreeAccessible final : public IAccessible, private CBaseObject {
  public:
    TreeAccessible(HWND tree, win::ComPtr<IAccessible> system)
        : CBaseObject(L"TreeAccessible"), m_tree(tree), m_system(std::move(system)) {}

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (object == nullptr) {
            return E_POINTER;
        }
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(IAccessible)) {
            *object = static_cast<IAccessible*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        const bool isForReaders = iid == IID_IEnumVARIANT || iid == IID_IOleWindow; // its children, and its window
        return isForReaders ? m_system->QueryInterface(iid, object) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

    // IDispatch
    STDMETHODIMP GetTypeInfoCount(UINT* count) override { return m_system->GetTypeInfoCount(count); }
    STDMETHODIMP GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
        return m_system->GetTypeInfo(index, locale, info);
    }
    STDMETHODIMP GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID locale, DISPID* ids) override {
        return m_system->GetIDsOfNames(iid, names, count, locale, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID iid, LCID locale, WORD flags, DISPPARAMS* arguments, VARIANT* result,
                        EXCEPINFO* exception, UINT* argument) override {
        if (id != DISPID_ACC_NAME || (flags & DISPATCH_PROPERTYGET) == 0 || arguments == nullptr ||
            arguments->cArgs != 1 || result == nullptr) {
            return m_system->Invoke(id, iid, locale, flags, arguments, result, exception, argument);
        }
        VariantInit(result);
        result->vt = VT_BSTR;
        return get_accName(arguments->rgvarg[0], &result->bstrVal);
    }

    // IAccessible: names are ours, the rest is the system's
    STDMETHODIMP get_accName(VARIANT child, BSTR* name) override;
    STDMETHODIMP get_accParent(IDispatch** parent) override { return m_system->get_accParent(parent); }
    STDMETHODIMP get_accChildCount(LONG* count) override { return m_system->get_accChildCount(count); }
    STDMETHODIMP get_accChild(VARIANT child, IDispatch** object) override {
        return m_system->get_accChild(child, object);
    }
    STDMETHODIMP get_accValue(VARIANT child, BSTR* value) override { return m_system->get_accValue(child, value); }
    STDMETHODIMP get_accDescription(VARIANT child, BSTR* text) override {
        return m_system->get_accDescription(child, text);
    }
    STDMETHODIMP get_accRole(VARIANT child, VARIANT* role) override { return m_system->get_accRole(child, role); }
    STDMETHODIMP get_accState(VARIANT child, VARIANT* state) override { return m_system->get_accState(child, state); }
    STDMETHODIMP get_accHelp(VARIANT child, BSTR* help) override { return m_system->get_accHelp(child, help); }
    STDMETHODIMP get_accHelpTopic(BSTR* file, VARIANT child, LONG* topic) override {
        return m_system->get_accHelpTopic(file, child, topic);
    }
    STDMETHODIMP get_accKeyboardShortcut(VARIANT child, BSTR* key) override {
        return m_system->get_accKeyboardShortcut(child, key);
    }
    STDMETHODIMP get_accFocus(VARIANT* child) override { return m_system->get_accFocus(child); }
    STDMETHODIMP get_accSelection(VARIANT* children) override { return m_system->get_accSelection(children); }
    STDMETHODIMP get_accDefaultAction(VARIANT child, BSTR* action) override {
        return m_system->get_accDefaultAction(child, action);
    }
    STDMETHODIMP accSelect(LONG flags, VARIANT child) override { return m_system->accSelect(flags, child); }
    STDMETHODIMP accLocation(LONG* left, LONG* top, LONG* width, LONG* height, VARIANT child) override {
        return m_system->accLocation(left, top, width, height, child);
    }
    STDMETHODIMP accNavigate(LONG direction, VARIANT start, VARIANT* end) override {
        return m_system->accNavigate(direction, start, end);
    }
    STDMETHODIMP accHitTest(LONG left, LONG top, VARIANT* child) override {
        return m_system->accHitTest(left, top, child);
    }
    STDMETHODIMP accDoDefaultAction(VARIANT child) override { return m_system->accDoDefaultAction(child); }
    STDMETHODIMP put_accName(VARIANT child, BSTR name) override { return m_system->put_accName(child, name); }
    STDMETHODIMP put_accValue(VARIANT child, BSTR value) override { return m_system->put_accValue(child, value); }

  private:
    ~TreeAccessible() = default;

    const HWND m_tree;
    const win::ComPtr<IAccessible> m_system;
    std::atomic<ULONG> m_references{1};
};

STDMETHODIMP TreeAccessible::get_accName(VARIANT child, BSTR* name) {
    if (name == nullptr) {
        return E_INVALIDARG;
    }
    *name = nullptr;
    return ComGuard([&] {
        std::wstring text;
        // A window that is gone answers nothing.
        if (child.vt != VT_I4 || child.lVal == CHILDID_SELF ||
            SendMessageW(m_tree, kNameOfAccessibleChild, static_cast<WPARAM>(child.lVal),
                         reinterpret_cast<LPARAM>(&text)) == 0) {
            return m_system->get_accName(child, name);
        }
        *name = win::Bstr(text).Detach();
        return *name != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

} // namespace

LRESULT AccessibleTree(HWND tree, WPARAM wParam) noexcept {
    const auto createStandard = Accessibility<decltype(&CreateStdAccessibleObject)>("CreateStdAccessibleObject");
    const auto toResult = Accessibility<decltype(&LresultFromObject)>("LresultFromObject");
    win::ComPtr<IAccessible> system;
    if (createStandard == nullptr || toResult == nullptr ||
        FAILED(createStandard(tree, OBJID_CLIENT, __uuidof(IAccessible), system.PutVoid()))) {
        return 0;
    }
    auto* const object = new (std::nothrow) TreeAccessible(tree, std::move(system));
    if (object == nullptr) {
        return 0;
    }
    const LRESULT result = toResult(__uuidof(IAccessible), wParam, object);
    object->Release();
    return result;
}
