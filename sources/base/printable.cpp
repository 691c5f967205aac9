#include "sources/base/printable.h"

#include <algorithm>

namespace source {

namespace {

struct Character {
    char32_t code = 0;
    size_t bytes = 0; // 0: there is no character
};

struct Range {
    char32_t first;
    char32_t last;
};

// What a terminal or a viewer obeys instead of showing it.
constexpr Range kUnseen[] = {
    {0x00, 0x1f},     {0x7f, 0x9f},     {0xad, 0xad},     {0x61c, 0x61c},     {0x180e, 0x180e},
    {0x200b, 0x200b}, {0x200e, 0x200f}, {0x2028, 0x202e}, {0x2060, 0x206f},   {0xfeff, 0xfeff},
    {0xfff9, 0xfffb}, {0xd800, 0xdfff}, {0xfffe, 0xffff}, {0xe0000, 0xe0fff},
};

Character FirstOf(std::string_view text) {
    const auto byteAt = [text](size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned first = byteAt(0);
    const size_t length = first < 0x80 ? 1 : (first < 0xc0 ? 0 : (first < 0xe0 ? 2 : (first < 0xf0 ? 3 : 4)));
    if (length == 0 || length > text.size() || first > 0xf4) {
        return {};
    }
    char32_t code = length == 1 ? first : first & (0x7fU >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((byteAt(i) & 0xc0U) != 0x80) {
            return {};
        }
        code = code << 6 | (byteAt(i) & 0x3fU);
    }
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000}; // longer forms than needed are none
    return code >= kLeast[length] && code <= 0x10ffff ? Character{code, length} : Character{};
}

bool IsShown(char32_t code) {
    return std::none_of(std::begin(kUnseen), std::end(kUnseen),
                        [code](const Range& range) { return code >= range.first && code <= range.last; });
}

} // namespace

std::string Printable(std::string_view utf8, size_t most) {
    std::string shown;
    for (size_t count = 0; !utf8.empty(); ++count) {
        if (count == most) {
            return shown + "...";
        }
        const Character character = FirstOf(utf8);
        const size_t bytes = std::max<size_t>(character.bytes, 1);
        shown += character.bytes > 0 && IsShown(character.code) ? utf8.substr(0, bytes) : "?";
        utf8.remove_prefix(bytes);
    }
    return shown;
}

} // namespace source
