// ComPtr: one counted reference on a COM interface, or none.
//
// Owner: the ComPtr; Attach takes a reference over, assignment from a raw pointer adds one.
// Threads: as the interface; the pointer itself is not synchronised.
#pragma once

#include <utility>

#include "win/platform.h"

namespace win {

template <typename Interface>
class ComPtr {
  public:
    ComPtr() = default;
    ComPtr(std::nullptr_t) {}
    ComPtr(Interface* pointer) : m_pointer(pointer) { AddReference(); }
    ComPtr(const ComPtr& other) : m_pointer(other.m_pointer) { AddReference(); }
    ComPtr(ComPtr&& other) noexcept : m_pointer(std::exchange(other.m_pointer, nullptr)) {}
    ~ComPtr() { Reset(); }

    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(m_pointer, other.m_pointer);
        return *this;
    }

    // Drops the reference held; the pointer is cleared before Release runs, which may call back.
    void Reset() {
        if (Interface* const pointer = std::exchange(m_pointer, nullptr)) {
            pointer->Release();
        }
    }
    void Attach(Interface* pointer) {
        Reset();
        m_pointer = pointer;
    }
    [[nodiscard]] Interface* Detach() { return std::exchange(m_pointer, nullptr); }

    [[nodiscard]] Interface* Get() const { return m_pointer; }
    Interface* operator->() const { return m_pointer; }
    explicit operator bool() const { return m_pointer != nullptr; }

    // For out-parameters: releases what is held first.
    [[nodiscard]] Interface** Put() {
        Reset();
        return &m_pointer;
    }
    [[nodiscard]] void** PutVoid() { return reinterpret_cast<void**>(Put()); }

    // The object's other interface, or none.
    template <typename Other>
    [[nodiscard]] ComPtr<Other> Query(REFIID iid) const {
        ComPtr<Other> other;
        if (m_pointer == nullptr || FAILED(m_pointer->QueryInterface(iid, other.PutVoid()))) {
            return {};
        }
        return other;
    }

    // Hands a further reference to the caller's out-parameter.
    void CopyTo(Interface** out) const {
        *out = m_pointer;
        AddReference();
    }

  private:
    void AddReference() const {
        if (m_pointer != nullptr) {
            m_pointer->AddRef();
        }
    }

    Interface* m_pointer = nullptr;
};

} // namespace win
