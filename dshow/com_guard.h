// ComGuard: the doorway of every COM method behind which code may throw.
//
// Errors: whatever the body throws becomes an HRESULT: E_OUTOFMEMORY for lack of memory, else E_UNEXPECTED.
#pragma once

#include <new>
#include <utility>

#include "win/platform.h"

template <typename Body>
[[nodiscard]] HRESULT ComGuard(Body&& body) noexcept {
    try {
        return std::forward<Body>(body)();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_UNEXPECTED;
    }
}
