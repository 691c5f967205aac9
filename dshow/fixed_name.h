// Names in the fixed arrays and task strings of the interfaces.
#pragma once

#include <algorithm>
#include <cstddef>

#include "win/platform.h"
#include "win/wide_string.h"

// Cuts what does not fit; the copy is always terminated.
template <size_t Size>
void CopyFixedName(WCHAR (&target)[Size], WideStringView name) noexcept {
    const size_t length = std::min(name.size(), Size - 1);
    std::copy_n(name.begin(), length, target);
    target[length] = 0;
}

// A copy that the receiver frees with CoTaskMemFree; null for lack of memory.
inline LPWSTR CopyToTaskString(WideStringView name) noexcept {
    auto* const copy = static_cast<LPWSTR>(CoTaskMemAlloc((name.size() + 1) * sizeof(WCHAR)));
    if (copy != nullptr) {
        std::copy(name.begin(), name.end(), copy);
        copy[name.size()] = 0;
    }
    return copy;
}
