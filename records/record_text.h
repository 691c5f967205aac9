// The texts of records: read from strings of the caller's, bounded, and given back.
//
// Units: UTF-16 code units. Errors: std::bad_alloc.
#pragma once

#include <algorithm>

#include "win/bstr.h"
#include "win/wide_string.h"

namespace records {

inline constexpr size_t kMaxTextLength = 32767;
inline constexpr size_t kMaxLanguageLength = 100; // the longest English name has 75
inline constexpr INT32 kMaxLevel = 15;
inline constexpr INT64 kMaxRecordTime = (INT64{1} << 62) / 100; // 100 ns; in nanoseconds it fits 64 bits

// One beyond the bound is cut behind it, and refused then: a hostile length costs no memory.
[[nodiscard]] inline WideString TextOf(BSTR text) {
    const size_t length = SysStringLen(text);
    return text == nullptr ? WideString() : WideString(text, std::min(length, kMaxTextLength + 1));
}

[[nodiscard]] inline bool IsText(WideStringView text, size_t longest = kMaxTextLength) {
    return text.size() <= longest && text.find(WCHAR{}) == WideStringView::npos;
}

// In place of the caller's string, which is freed; null for an empty one.
inline void ReplaceText(BSTR& text, WideStringView by) {
    win::Bstr copy = by.empty() ? win::Bstr() : win::Bstr(by);
    SysFreeString(text);
    text = copy.Detach();
}

} // namespace records
