#include "media/plain_text.h"

#include <cstddef>
#include <string_view>

#include "win/code_page_text.h"
#include "win/utf8_text.h"

namespace media {

namespace {

constexpr UINT kWindows1252 = 1252;
constexpr BYTE kContinuation = 0x80;
constexpr BYTE kContinuationMask = 0xc0;
constexpr unsigned kContinuationBits = 6;

// Bytes that begin with so many ones are followed by one fewer.
struct Form {
    BYTE mask;
    BYTE lead;
    size_t more;
    UINT32 least; // what a shorter form holds is none of this one
};
constexpr Form kForms[] = {{0x80, 0x00, 0, 0}, {0xe0, 0xc0, 1, 0x80}, {0xf0, 0xe0, 2, 0x800}, {0xf8, 0xf0, 3, 0x10000}};

bool IsCharacter(UINT32 code) {
    constexpr UINT32 kFirstSurrogate = 0xd800;
    constexpr UINT32 kLastSurrogate = 0xdfff;
    constexpr UINT32 kLastCharacter = 0x10ffff;
    return code < kFirstSurrogate || (code > kLastSurrogate && code <= kLastCharacter);
}

// The bytes of the character in front; 0 for none.
size_t CharacterBytes(ByteView text) {
    for (const Form& form : kForms) {
        if ((text[0] & form.mask) != form.lead || text.size() <= form.more) {
            continue;
        }
        UINT32 code = text[0] & static_cast<BYTE>(~form.mask);
        for (const BYTE byte : text.subspan(1, form.more)) {
            if ((byte & kContinuationMask) != kContinuation) {
                return 0;
            }
            code = code << kContinuationBits | (byte & static_cast<BYTE>(~kContinuationMask));
        }
        return code >= form.least && IsCharacter(code) ? 1 + form.more : 0;
    }
    return 0;
}

} // namespace

ByteView WithoutEnd(ByteView text) {
    while (!text.empty() && text.back() == 0) {
        text = text.first(text.size() - 1);
    }
    return text;
}

bool IsUtf8(ByteView text) {
    while (!text.empty()) {
        const size_t bytes = CharacterBytes(text);
        if (bytes == 0) {
            return false;
        }
        text = text.subspan(bytes);
    }
    return true;
}

std::vector<BYTE> Utf8Of(ByteView text) {
    text = WithoutEnd(text);
    if (IsUtf8(text)) {
        return CopyOf(text);
    }
    const std::string_view narrow(reinterpret_cast<const char*>(text.data()), text.size());
    const std::string utf8 = win::Utf8FromWide(win::WideFromNarrow(kWindows1252, narrow));
    return {utf8.begin(), utf8.end()};
}

} // namespace media
