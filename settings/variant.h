// Variant: one owned VARIANT.
//
// Owner: what it holds is freed with it. Errors: std::bad_alloc.
#pragma once

#include <string_view>

#include "win/bstr.h"
#include "win/platform.h"

class Variant {
  public:
    Variant() { VariantInit(&m_value); }
    explicit Variant(std::wstring_view text) : Variant() {
        m_value.bstrVal = win::Bstr(text).Detach();
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
    [[nodiscard]] VARIANT* Put() {
        Clear();
        return &m_value;
    }
    [[nodiscard]] const VARIANT& Get() const { return m_value; }
    [[nodiscard]] VARTYPE Type() const { return m_value.vt; }
    // Empty unless it is a text.
    [[nodiscard]] std::wstring_view Text() const {
        return m_value.vt == VT_BSTR && m_value.bstrVal != nullptr
                   ? std::wstring_view(m_value.bstrVal, SysStringLen(m_value.bstrVal))
                   : std::wstring_view();
    }

  private:
    VARIANT m_value;
};
