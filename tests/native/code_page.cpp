#include "tests/native/code_page.h"

#include <algorithm>
#include <array>

namespace native {

namespace {

constexpr char32_t kReplacement = 0xfffd;
constexpr unsigned kFirstSpecial = 0x80; // up to here, and from 0xa0 on, Windows-1252 is Latin-1
constexpr std::array<WCHAR, 32> kSpecial{0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021,
                                         0x02c6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008d, 0x017d, 0x008f,
                                         0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022, 0x2013, 0x2014,
                                         0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178};
constexpr unsigned kEndSpecial = kFirstSpecial + kSpecial.size();
constexpr unsigned kEndLatin1 = 0x100;

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xd800 && unit <= 0xdbff;
}

bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xdc00 && unit <= 0xdfff;
}

// What may follow a UTF-8 lead byte: how many bytes, and the range of the first of them.
struct Utf8Lead {
    int following;
    unsigned char low;
    unsigned char high;
};

std::optional<Utf8Lead> ClassifyLead(unsigned char lead) {
    if (lead >= 0xc2 && lead <= 0xdf) {
        return Utf8Lead{1, 0x80, 0xbf};
    }
    if (lead >= 0xe0 && lead <= 0xef) { // no overlong form, no surrogate
        return Utf8Lead{2, static_cast<unsigned char>(lead == 0xe0 ? 0xa0 : 0x80),
                        static_cast<unsigned char>(lead == 0xed ? 0x9f : 0xbf)};
    }
    if (lead >= 0xf0 && lead <= 0xf4) { // no overlong form, nothing above U+10FFFF
        return Utf8Lead{3, static_cast<unsigned char>(lead == 0xf0 ? 0x90 : 0x80),
                        static_cast<unsigned char>(lead == 0xf4 ? 0x8f : 0xbf)};
    }
    return std::nullopt;
}

} // namespace

UINT ResolveCodePage(UINT codePage) {
    return codePage == CP_ACP || codePage == CP_THREAD_ACP ? kWindows1252 : codePage;
}

std::optional<char> ToWindows1252(WCHAR unit) {
    if (unit < kFirstSpecial || (unit >= kEndSpecial && unit < kEndLatin1)) {
        return static_cast<char>(unit);
    }
    const auto found = std::find(kSpecial.begin(), kSpecial.end(), unit);
    if (found == kSpecial.end()) {
        return std::nullopt;
    }
    return static_cast<char>(kFirstSpecial + static_cast<unsigned>(found - kSpecial.begin()));
}

WCHAR FromWindows1252(char byte) {
    const auto value = static_cast<unsigned char>(byte);
    return value >= kFirstSpecial && value < kEndSpecial ? kSpecial[value - kFirstSpecial] : WCHAR{value};
}

char32_t TakeUtf16(std::basic_string_view<WCHAR>& text, bool& valid) {
    const char32_t first = text.front();
    text.remove_prefix(1);
    if (!IsHighSurrogate(first) && !IsLowSurrogate(first)) {
        return first;
    }
    if (IsLowSurrogate(first) || text.empty() || !IsLowSurrogate(text.front())) {
        valid = false;
        return kReplacement;
    }
    const char32_t second = text.front();
    text.remove_prefix(1);
    return 0x10000 + ((first - 0xd800) << 10) + (second - 0xdc00);
}

char32_t TakeUtf8(std::string_view& text, bool& valid) {
    const auto byteAt = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char first = byteAt(0);
    text.remove_prefix(1);
    if (first < 0x80) {
        return first;
    }
    const auto lead = ClassifyLead(first);
    if (!lead) {
        valid = false;
        return kReplacement;
    }
    constexpr int kBitsPerByte = 6;
    char32_t character = first & (0x3f >> lead->following);
    for (int i = 0; i < lead->following; ++i) {
        const unsigned char low = i == 0 ? lead->low : 0x80;
        const unsigned char high = i == 0 ? lead->high : 0xbf;
        if (text.empty() || byteAt(0) < low || byteAt(0) > high) {
            valid = false; // the bytes taken so far give one replacement; this byte begins the next character
            return kReplacement;
        }
        character = character << kBitsPerByte | (byteAt(0) & 0x3f);
        text.remove_prefix(1);
    }
    return character;
}

void AppendUtf8(std::string& text, char32_t character) {
    const auto tail = [&](int shift) { text.push_back(static_cast<char>(0x80 | ((character >> shift) & 0x3f))); };
    if (character < 0x80) {
        text.push_back(static_cast<char>(character));
    } else if (character < 0x800) {
        text.push_back(static_cast<char>(0xc0 | character >> 6));
        tail(0);
    } else if (character < 0x10000) {
        text.push_back(static_cast<char>(0xe0 | character >> 12));
        tail(6);
        tail(0);
    } else {
        text.push_back(static_cast<char>(0xf0 | character >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

void AppendUtf16(std::basic_string<WCHAR>& text, char32_t character) {
    if (character < 0x10000) {
        text.push_back(static_cast<WCHAR>(character));
        return;
    }
    text.push_back(static_cast<WCHAR>(0xd800 + ((character - 0x10000) >> 10)));
    text.push_back(static_cast<WCHAR>(0xdc00 + ((character - 0x10000) & 0x3ff)));
}

} // namespace native
