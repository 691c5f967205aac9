#include "win/utf8_text.h"

#include "win/code_page_text.h"

namespace win {

namespace {

constexpr char32_t kReplacementCharacter = 0xfffd;
constexpr char32_t kFirstSupplementaryCharacter = 0x10000;

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xd800 && unit <= 0xdbff;
}

bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xdc00 && unit <= 0xdfff;
}

// Takes one or two units off the front.
char32_t TakeCharacter(WideStringView& text) {
    const auto first = static_cast<char32_t>(text.front());
    text.remove_prefix(1);
    if (!IsHighSurrogate(first)) {
        return IsLowSurrogate(first) ? kReplacementCharacter : first;
    }
    if (text.empty() || !IsLowSurrogate(static_cast<char32_t>(text.front()))) {
        return kReplacementCharacter;
    }
    const auto second = static_cast<char32_t>(text.front());
    text.remove_prefix(1);
    return kFirstSupplementaryCharacter + ((first & 0x3ff) << 10 | (second & 0x3ff));
}

void AppendContinuation(std::string& utf8, char32_t character, int shift) {
    utf8 += static_cast<char>(0x80 | (character >> shift & 0x3f));
}

void AppendUtf8(std::string& utf8, char32_t character) {
    if (character < 0x80) {
        utf8 += static_cast<char>(character);
    } else if (character < 0x800) {
        utf8 += static_cast<char>(0xc0 | character >> 6);
        AppendContinuation(utf8, character, 0);
    } else if (character < kFirstSupplementaryCharacter) {
        utf8 += static_cast<char>(0xe0 | character >> 12);
        AppendContinuation(utf8, character, 6);
        AppendContinuation(utf8, character, 0);
    } else {
        utf8 += static_cast<char>(0xf0 | character >> 18);
        AppendContinuation(utf8, character, 12);
        AppendContinuation(utf8, character, 6);
        AppendContinuation(utf8, character, 0);
    }
}

} // namespace

std::string Utf8FromWide(WideStringView text) {
    std::string utf8;
    utf8.reserve(text.size());
    while (!text.empty()) {
        AppendUtf8(utf8, TakeCharacter(text));
    }
    return utf8;
}

WideString WideFromUtf8(std::string_view text) {
    return WideFromNarrow(CP_UTF8, text);
}

} // namespace win
