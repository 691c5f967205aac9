// Owners of what the system hands out: one policy a kind of handle (type, invalid value, close function).
#pragma once

#include <utility>

#include "win/platform.h"

namespace win {

template <typename Policy>
class UniqueHandle {
  public:
    using Type = typename Policy::Type;

    UniqueHandle() = default;
    explicit UniqueHandle(Type handle) : m_handle(handle) {}
    UniqueHandle(UniqueHandle&& other) noexcept : m_handle(std::exchange(other.m_handle, Policy::Invalid())) {}
    ~UniqueHandle() { Reset(); }

    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        if (this != &other) {
            Reset(std::exchange(other.m_handle, Policy::Invalid()));
        }
        return *this;
    }

    void Reset(Type handle = Policy::Invalid()) {
        const Type old = std::exchange(m_handle, handle);
        if (old != Policy::Invalid()) {
            Policy::Close(old);
        }
    }

    [[nodiscard]] Type Get() const { return m_handle; }
    explicit operator bool() const { return m_handle != Policy::Invalid(); }
    [[nodiscard]] Type* Put() {
        Reset();
        return &m_handle;
    }

  private:
    Type m_handle = Policy::Invalid();
};

// Events, threads, processes: 0 is invalid.
struct KernelObjectPolicy {
    using Type = HANDLE;
    static Type Invalid() { return nullptr; }
    static void Close(Type handle) { CloseHandle(handle); }
};

// Files: all ones is invalid.
struct FilePolicy {
    using Type = HANDLE;
    static Type Invalid() { return INVALID_HANDLE_VALUE; }
    static void Close(Type handle) { CloseHandle(handle); }
};

using KernelHandle = UniqueHandle<KernelObjectPolicy>;
using FileHandle = UniqueHandle<FilePolicy>;

} // namespace win
