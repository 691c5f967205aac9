#include "settings/lexical.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

#include "win/platform.h"

namespace {

constexpr std::wstring_view kInfinity = L"INF";
constexpr std::wstring_view kNegativeInfinity = L"-INF";
constexpr std::wstring_view kNotANumber = L"NaN";
constexpr size_t kLongestDoubleChars = 32;
constexpr wchar_t kBase64Digits[] = L"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

std::wstring_view Trimmed(std::wstring_view text) {
    while (!text.empty() && IsXmlSpace(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && IsXmlSpace(text.back())) {
        text.remove_suffix(1);
    }
    return text;
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// The number's characters without a '+'; empty when one is no character of a number, so that the parser never sees
// its own spellings of infinity.
std::string NumberChars(std::wstring_view text) {
    text = Trimmed(text);
    const bool plus = text.starts_with(L'+');
    text.remove_prefix(plus ? 1 : 0);
    std::string chars;
    for (const wchar_t c : text) {
        const char narrow = c < 0x80 ? static_cast<char>(c) : '\0';
        const bool signAfterPlus = plus && chars.empty() && narrow == '-';
        if (signAfterPlus || (!IsDigit(narrow) && std::string_view("+-.eE").find(narrow) == std::string_view::npos)) {
            return {};
        }
        chars += narrow;
    }
    return chars;
}

template <typename Number>
std::optional<Number> ParseNumber(std::wstring_view text) {
    const std::string chars = NumberChars(text);
    Number value{};
    const char* const end = chars.data() + chars.size();
    const auto [stopped, error] = std::from_chars(chars.data(), end, value);
    return error == std::errc() && stopped == end ? std::optional(value) : std::nullopt;
}

bool IsBase64Digit(wchar_t c) {
    return (c >= L'A' && c <= L'Z') || (c >= L'a' && c <= L'z') || (c >= L'0' && c <= L'9') || c == L'+' || c == L'/';
}

} // namespace

std::wstring DoubleText(double value) {
    if (std::isnan(value)) {
        return std::wstring(kNotANumber);
    }
    if (std::isinf(value)) {
        return std::wstring(value > 0 ? kInfinity : kNegativeInfinity);
    }
    std::array<char, kLongestDoubleChars> chars{};
    const auto written = std::to_chars(chars.data(), chars.data() + chars.size(), value);
    return {chars.data(), written.ptr};
}

std::wstring Base64Text(std::span<const unsigned char> bytes) {
    std::wstring text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t count = std::min<size_t>(3, bytes.size() - i);
        unsigned group = 0;
        for (size_t j = 0; j < 3; ++j) {
            group = group << 8 | (j < count ? bytes[i + j] : 0U);
        }
        for (size_t j = 0; j < 4; ++j) {
            text += j <= count ? kBase64Digits[group >> (18 - 6 * j) & 0x3F] : L'=';
        }
    }
    return text;
}

std::optional<std::int32_t> ParseInt32(std::wstring_view text) {
    return ParseNumber<std::int32_t>(text);
}

std::optional<std::int64_t> ParseInt64(std::wstring_view text) {
    return ParseNumber<std::int64_t>(text);
}

std::optional<double> ParseDouble(std::wstring_view text) {
    const std::wstring_view trimmed = Trimmed(text);
    if (trimmed == kInfinity) {
        return std::numeric_limits<double>::infinity();
    }
    if (trimmed == kNegativeInfinity) {
        return -std::numeric_limits<double>::infinity();
    }
    if (trimmed == kNotANumber) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    return ParseNumber<double>(text);
}

std::optional<size_t> Base64Size(std::wstring_view text) {
    size_t digits = 0;
    size_t padding = 0;
    for (const wchar_t c : text) {
        if (IsXmlSpace(c)) {
            continue;
        }
        if (c == L'=') {
            ++padding;
        } else if (padding == 0 && IsBase64Digit(c)) {
            ++digits;
        } else {
            return std::nullopt;
        }
    }
    const bool whole = (digits + padding) % 4 == 0 && padding <= 2 && (padding == 0 || digits > 0);
    return whole ? std::optional(digits * 3 / 4) : std::nullopt;
}

bool IsXmlSpace(wchar_t c) {
    return c == L' ' || c == L'\t' || c == L'\r' || c == L'\n';
}

bool IsXmlText(std::wstring_view text) {
    for (size_t i = 0; i < text.size(); ++i) {
        const wchar_t c = text[i];
        if (IS_HIGH_SURROGATE(c) && i + 1 < text.size() && IS_LOW_SURROGATE(text[i + 1])) {
            ++i;
        } else if ((c < L' ' && !IsXmlSpace(c)) || IS_HIGH_SURROGATE(c) || IS_LOW_SURROGATE(c) || c >= 0xFFFE) {
            return false;
        }
    }
    return true;
}
