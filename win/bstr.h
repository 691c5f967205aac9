// Bstr: one owned BSTR. A null BSTR is a valid value and differs from an empty one.
#pragma once

#include <new>
#include <utility>

#include "win/platform.h"
#include "win/wide_string.h"

namespace win {

class Bstr {
  public:
    Bstr() = default;
    // Throws std::bad_alloc.
    explicit Bstr(WideStringView text) : m_text(SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {
        if (m_text == nullptr) {
            throw std::bad_alloc();
        }
    }
    Bstr(const Bstr& other) : m_text(Duplicate(other.m_text)) {}
    Bstr(Bstr&& other) noexcept : m_text(std::exchange(other.m_text, nullptr)) {}
    ~Bstr() { SysFreeString(m_text); }
    Bstr& operator=(Bstr other) noexcept {
        std::swap(m_text, other.m_text);
        return *this;
    }

    // A copy of a BSTR that stays its holder's; null gives null. Throws std::bad_alloc.
    static Bstr CopyOf(BSTR text) {
        Bstr copy;
        copy.m_text = Duplicate(text);
        return copy;
    }

    [[nodiscard]] BSTR Get() const { return m_text; }
    [[nodiscard]] BSTR Detach() { return std::exchange(m_text, nullptr); }
    [[nodiscard]] BSTR* Put() {
        SysFreeString(std::exchange(m_text, nullptr));
        return &m_text;
    }
    [[nodiscard]] WideStringView View() const {
        return m_text == nullptr ? WideStringView() : WideStringView(m_text, SysStringLen(m_text));
    }

  private:
    static BSTR Duplicate(BSTR text) {
        if (text == nullptr) {
            return nullptr;
        }
        const BSTR copy = SysAllocStringLen(text, SysStringLen(text));
        if (copy == nullptr) {
            throw std::bad_alloc();
        }
        return copy;
    }

    BSTR m_text = nullptr;
};

} // namespace win
