// Variant: one owned VARIANT.
//
// Owner: what it holds is freed with it. Errors: std::bad_alloc.
#pragma once

#include "win/bstr.h"
#include "win/platform.h"
#include "win/wide_string.h"

namespace win {

class Variant {
  public:
    Variant() { VariantInit(&m_value); }
    explicit Variant(WideStringView text) : Variant() {
        m_value.bstrVal = Bstr(text).Detach();
        m_value.vt = VT_BSTR;
    }
    // Adds a reference; null stays null.
    explicit Variant(IUnknown* object) : Variant() {
        m_value.vt = VT_UNKNOWN;
        m_value.punkVal = object;
        if (object != nullptr) {
            object->AddRef();
        }
    }
    ~Variant() { VariantClear(&m_value); }
    Variant(const Variant&) = delete;
    Variant& operator=(const Variant&) = delete;

    void Clear() { VariantClear(&m_value); }
    // For out-parameters, and for a type and a value to be filled in: frees what is held first.
    [[nodiscard]] VARIANT* Put() {
        Clear();
        return &m_value;
    }
    [[nodiscard]] const VARIANT& Get() const { return m_value; }
    [[nodiscard]] VARTYPE Type() const { return m_value.vt; }
    // Empty unless it is a text.
    [[nodiscard]] WideStringView Text() const {
        return m_value.vt == VT_BSTR && m_value.bstrVal != nullptr
                   ? WideStringView(m_value.bstrVal, SysStringLen(m_value.bstrVal))
                   : WideStringView();
    }

  private:
    VARIANT m_value;
};

} // namespace win
