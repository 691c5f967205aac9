#include "tools/text_source/text_decoder.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>

#include "mkv/utf8_text.h"

namespace subtitles {

namespace {

constexpr WCHAR kReplacement = 0xfffd;
// 80 to 9F of Windows-1252; the five that it leaves open stand for themselves.
constexpr WCHAR kWindows1252[] = {
    0x20ac, 0x81,   0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8d,   0x017d, 0x8f,   0x90,   0x2018, 0x2019, 0x201c, 0x201d, 0x2022,
    0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x9d,   0x017e, 0x0178,
};
static_assert(std::size(kWindows1252) == 32);

bool BeginsWith(std::span<const BYTE> bytes, std::initializer_list<BYTE> mark) {
    return bytes.size() >= mark.size() && std::equal(mark.begin(), mark.end(), bytes.begin());
}

// How many bytes a sequence that begins so has; 0 for a byte that cannot begin one.
size_t SequenceLength(BYTE first) {
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xc2 || first > 0xf4) {
        return 0;
    }
    return first < 0xe0 ? 2 : (first < 0xf0 ? 3 : 4);
}

// Continuation bytes, and neither overlong forms nor surrogates nor what lies behind U+10FFFF.
bool IsSequence(std::span<const BYTE> bytes) {
    for (const BYTE byte : bytes.subspan(1)) {
        if ((byte & 0xc0) != 0x80) {
            return false;
        }
    }
    const unsigned first = bytes[0];
    const unsigned second = bytes.size() > 1 ? bytes[1] : 0;
    return !(first == 0xe0 && second < 0xa0) && !(first == 0xed && second > 0x9f) &&
           !(first == 0xf0 && second < 0x90) && !(first == 0xf4 && second > 0x8f);
}

// The length of the sequence at the front; 0 when there is none.
size_t ValidLength(std::span<const BYTE> bytes) {
    const size_t length = SequenceLength(bytes[0]);
    return length != 0 && length <= bytes.size() && IsSequence(bytes.first(length)) ? length : 0;
}

bool IsUtf8(std::span<const BYTE> bytes) {
    while (!bytes.empty()) {
        const size_t length = ValidLength(bytes);
        if (length == 0) {
            return false;
        }
        bytes = bytes.subspan(length);
    }
    return true;
}

std::string RepairedUtf8(std::span<const BYTE> bytes) {
    std::string text;
    while (!bytes.empty()) {
        const size_t length = ValidLength(bytes);
        if (length == 0) {
            text += mkv::ToUtf8(WideString(1, kReplacement));
            bytes = bytes.subspan(1);
        } else {
            text.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
            bytes = bytes.subspan(length);
        }
    }
    return text;
}

std::string FromUtf16(std::span<const BYTE> bytes, size_t lowByte) {
    WideString text;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text += static_cast<WCHAR>(bytes[i + lowByte] | bytes[i + 1 - lowByte] << 8);
    }
    if (bytes.size() % 2 != 0) {
        text += kReplacement;
    }
    return mkv::ToUtf8(text);
}

std::string FromWindows1252(std::span<const BYTE> bytes) {
    WideString text;
    for (const BYTE byte : bytes) {
        text += byte >= 0x80 && byte < 0xa0 ? kWindows1252[byte - 0x80] : static_cast<WCHAR>(byte);
    }
    return mkv::ToUtf8(text);
}

} // namespace

std::string DecodeText(std::span<const BYTE> bytes) {
    if (BeginsWith(bytes, {0xef, 0xbb, 0xbf})) {
        return RepairedUtf8(bytes.subspan(3));
    }
    if (BeginsWith(bytes, {0xff, 0xfe})) {
        return FromUtf16(bytes.subspan(2), 0);
    }
    if (BeginsWith(bytes, {0xfe, 0xff})) {
        return FromUtf16(bytes.subspan(2), 1);
    }
    return IsUtf8(bytes) ? std::string(bytes.begin(), bytes.end()) : FromWindows1252(bytes);
}

std::vector<std::string> SplitLines(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    while (start < text.size()) {
        const size_t end = std::min(text.find_first_of("\r\n", start), text.size());
        lines.push_back(text.substr(start, end - start));
        const bool isPair = end + 1 < text.size() && text[end] == '\r' && text[end + 1] == '\n';
        start = end + (isPair ? 2 : 1);
    }
    return lines;
}

std::string Trimmed(const std::string& text) {
    constexpr const char* kSpaces = " \t\f\v";
    const size_t first = text.find_first_not_of(kSpaces);
    return first == std::string::npos ? std::string() : text.substr(first, text.find_last_not_of(kSpaces) - first + 1);
}

} // namespace subtitles
