// VARIANTs of the scalar types, texts and interfaces; arrays and records are not part of the lane.
#include "win/platform.h"

namespace {

constexpr VARTYPE kModifiers = VT_VECTOR | VT_ARRAY | VT_BYREF | VT_RESERVED;

bool IsKnown(VARTYPE type) {
    switch (type & VT_TYPEMASK) {
    case VT_EMPTY:
    case VT_NULL:
        return (type & kModifiers) == 0;
    case VT_I1:
    case VT_I2:
    case VT_I4:
    case VT_I8:
    case VT_INT:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_UI8:
    case VT_UINT:
    case VT_R4:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
    case VT_BSTR:
    case VT_DISPATCH:
    case VT_ERROR:
    case VT_BOOL:
    case VT_UNKNOWN:
    case VT_VARIANT:
    case VT_DECIMAL:
        return (type & (VT_VECTOR | VT_ARRAY | VT_RESERVED)) == 0;
    default:
        return false;
    }
}

bool HoldsInterface(const VARIANT& variant) {
    return (V_VT(&variant) == VT_UNKNOWN || V_VT(&variant) == VT_DISPATCH) && V_UNKNOWN(&variant) != nullptr;
}

} // namespace

void WINAPI VariantInit(VARIANTARG* variant) {
    V_VT(variant) = VT_EMPTY;
}

HRESULT WINAPI VariantClear(VARIANTARG* variant) {
    if (!IsKnown(V_VT(variant))) {
        return DISP_E_BADVARTYPE;
    }
    if (V_VT(variant) == VT_BSTR) {
        SysFreeString(V_BSTR(variant));
    } else if (HoldsInterface(*variant)) {
        V_UNKNOWN(variant)->Release();
    }
    V_VT(variant) = VT_EMPTY;
    return S_OK;
}

HRESULT WINAPI VariantCopy(VARIANTARG* target, const VARIANTARG* source) {
    if (target == source) {
        return S_OK;
    }
    if (!IsKnown(V_VT(source))) {
        return DISP_E_BADVARTYPE;
    }
    const HRESULT cleared = VariantClear(target);
    if (FAILED(cleared)) {
        return cleared;
    }
    VARIANT copy = *source;
    if (V_VT(source) == VT_BSTR && V_BSTR(source) != nullptr) {
        V_BSTR(&copy) =
            SysAllocStringByteLen(reinterpret_cast<LPCSTR>(V_BSTR(source)), SysStringByteLen(V_BSTR(source)));
        if (V_BSTR(&copy) == nullptr) {
            return E_OUTOFMEMORY;
        }
    } else if (HoldsInterface(copy)) {
        V_UNKNOWN(&copy)->AddRef();
    }
    *target = copy;
    return S_OK;
}
