// The COM library: apartments are only counted, and the only classes are those that a test offers.
#include <atomic>
#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>

#include "tests/native/native_hooks.h"

namespace {

struct GuidLess {
    bool operator()(const GUID& a, const GUID& b) const { return std::memcmp(&a, &b, sizeof(GUID)) < 0; }
};

struct ClassTable {
    std::mutex mutex;
    std::map<CLSID, native::CreateClass, GuidLess> classes;
};

ClassTable& Classes() {
    static ClassTable table;
    return table;
}

std::atomic<int> g_initializations{0};
thread_local int t_initializations = 0;
thread_local DWORD t_model = 0; // as given to the first CoInitializeEx

constexpr int kGuidTextLength = 38; // {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}

} // namespace

namespace native {

int ComInitializations() {
    return g_initializations;
}

ScopedClass::ScopedClass(REFCLSID clsid, CreateClass create) : m_clsid(clsid) {
    const std::lock_guard lock(Classes().mutex);
    Classes().classes.insert_or_assign(clsid, std::move(create));
}

ScopedClass::~ScopedClass() {
    const std::lock_guard lock(Classes().mutex);
    Classes().classes.erase(m_clsid);
}

} // namespace native

HRESULT WINAPI CoInitializeEx(void* reserved, DWORD model) {
    constexpr DWORD kApartment = COINIT_APARTMENTTHREADED;
    if (reserved != nullptr) {
        return E_INVALIDARG;
    }
    if (t_initializations > 0 && ((t_model ^ model) & kApartment) != 0) {
        return RPC_E_CHANGED_MODE;
    }
    if (t_initializations == 0) {
        t_model = model;
    }
    ++g_initializations;
    return t_initializations++ == 0 ? S_OK : S_FALSE;
}

HRESULT WINAPI CoInitialize(void* reserved) {
    return CoInitializeEx(reserved, COINIT_APARTMENTTHREADED);
}

void WINAPI CoUninitialize() {
    if (t_initializations > 0) {
        --t_initializations;
        --g_initializations;
    }
}

// Works on threads that have not called CoInitializeEx too, as it does for classes of both threading models.
HRESULT WINAPI CoCreateInstance(REFCLSID clsid, IUnknown* outer, DWORD, REFIID iid, void** object) {
    if (object == nullptr) {
        return E_POINTER;
    }
    *object = nullptr;
    native::CreateClass create;
    {
        const std::lock_guard lock(Classes().mutex);
        const auto found = Classes().classes.find(clsid);
        if (found == Classes().classes.end()) {
            return REGDB_E_CLASSNOTREG;
        }
        create = found->second;
    }
    return create(outer, iid, object);
}

INT WINAPI StringFromGUID2(REFGUID guid, LPOLESTR text, INT capacity) {
    if (capacity <= kGuidTextLength) {
        return 0;
    }
    char narrow[kGuidTextLength + 1];
    const BYTE* const tail = guid.Data4;
    std::snprintf(narrow, sizeof(narrow), "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", guid.Data1, guid.Data2,
                  guid.Data3, tail[0], tail[1], tail[2], tail[3], tail[4], tail[5], tail[6], tail[7]);
    for (int i = 0; i <= kGuidTextLength; ++i) {
        text[i] = static_cast<OLECHAR>(narrow[i]);
    }
    return kGuidTextLength + 1;
}
