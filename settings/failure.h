// settings_failure: the two failures that the settings throw instead of answering false.
//
// Errors: E_INVALIDARG for a string of impossible length, E_OUTOFMEMORY for lack of memory.
#pragma once

#include <climits>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "win/platform.h"

struct settings_failure {
    HRESULT hr;
};

// Lengths are signed 32-bit numbers of characters in all the platform's calls that the settings use.
inline constexpr size_t kMaxStringChars = INT_MAX;

inline void RequirePossibleLength(std::wstring_view text) {
    if (text.size() > kMaxStringChars) {
        throw settings_failure{E_INVALIDARG};
    }
}

// Runs one operation of a back end; what the standard library throws leaves as a settings_failure.
template <typename Body>
auto Guarded(Body&& body) {
    try {
        return std::forward<Body>(body)();
    } catch (const std::bad_alloc&) {
        throw settings_failure{E_OUTOFMEMORY};
    } catch (const std::length_error&) {
        throw settings_failure{E_INVALIDARG};
    }
}
