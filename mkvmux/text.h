// Text: the system speaks UTF-16, the option parser and the output UTF-8.
#pragma once

#include <string>
#include <string_view>

#include "win/utf8_text.h"

namespace mkvmux {

using win::Utf8FromWide;
using win::WideFromUtf8;

// A text that an input brought, fit for a line of a console and for what reads the tool's output: UTF-8 without control
// characters. A long one ends in dots.
[[nodiscard]] std::string Shown(std::wstring_view text);

// What the system says about a result, on one line and without a final full stop: "File not found (0x80070002)".
[[nodiscard]] std::string DescribeResult(HRESULT hr);

// Of the system's call on this thread that has just failed: negative, whatever it left as its error.
[[nodiscard]] HRESULT LastResult();

} // namespace mkvmux
