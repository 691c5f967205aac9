#include "sources/text/text_decoder.h"

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <utility>

#include "win/utf8_text.h"

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

std::string RepairedUtf8(std::span<const BYTE> bytes, size_t most) {
    const std::string replacement = win::Utf8FromWide(WideString(1, kReplacement));
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty() && text.size() <= most) {
        const size_t length = ValidLength(bytes);
        if (length == 0) {
            text += replacement;
            bytes = bytes.subspan(1);
        } else {
            text.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length));
            bytes = bytes.subspan(length);
        }
    }
    return text;
}

// Collects UTF-16 and turns it into UTF-8 a piece at a time: the whole text is not held in both.
class Utf16Collector {
  public:
    Utf16Collector(size_t expected, size_t most) : m_most(most) { m_text.reserve(expected); }

    [[nodiscard]] bool IsFull() const { return m_text.size() > m_most; }

    void Add(WCHAR unit) {
        const bool mayBeHalf = unit >= 0xd800 && unit < 0xdc00;
        m_piece += unit;
        if (m_piece.size() >= kPieceUnits && !mayBeHalf) {
            Convert();
        }
    }
    [[nodiscard]] std::string Take() {
        Convert();
        return std::move(m_text);
    }

  private:
    static constexpr size_t kPieceUnits = 4096;

    void Convert() {
        m_text += win::Utf8FromWide(m_piece);
        m_piece.clear();
    }

    const size_t m_most;
    WideString m_piece;
    std::string m_text;
};

std::string FromUtf16(std::span<const BYTE> bytes, size_t lowByte, size_t most) {
    Utf16Collector text(bytes.size(), most);
    for (size_t i = 0; i + 1 < bytes.size() && !text.IsFull(); i += 2) {
        text.Add(static_cast<WCHAR>(bytes[i + lowByte] | bytes[i + 1 - lowByte] << 8));
    }
    if (bytes.size() % 2 != 0) {
        text.Add(kReplacement);
    }
    return text.Take();
}

std::string FromWindows1252(std::span<const BYTE> bytes, size_t most) {
    Utf16Collector text(bytes.size(), most);
    for (size_t i = 0; i < bytes.size() && !text.IsFull(); ++i) {
        const BYTE byte = bytes[i];
        text.Add(byte >= 0x80 && byte < 0xa0 ? kWindows1252[byte - 0x80] : static_cast<WCHAR>(byte));
    }
    return text.Take();
}

} // namespace

std::string DecodeText(std::span<const BYTE> bytes, size_t most) {
    if (BeginsWith(bytes, {0xef, 0xbb, 0xbf})) {
        return RepairedUtf8(bytes.subspan(3), most);
    }
    if (BeginsWith(bytes, {0xff, 0xfe})) {
        return FromUtf16(bytes.subspan(2), 0, most);
    }
    if (BeginsWith(bytes, {0xfe, 0xff})) {
        return FromUtf16(bytes.subspan(2), 1, most);
    }
    return IsUtf8(bytes) ? std::string(bytes.begin(), bytes.end()) : FromWindows1252(bytes, most);
}

std::optional<std::string_view> LineReader::Next() {
    if (m_rest.empty()) {
        return {};
    }
    const size_t end = std::min(m_rest.find_first_of("\r\n"), m_rest.size());
    const std::string_view line = m_rest.substr(0, end);
    const bool isPair = m_rest.substr(end).starts_with("\r\n");
    m_rest.remove_prefix(std::min(end + (isPair ? 2 : 1), m_rest.size()));
    return line;
}

std::string_view Trimmed(std::string_view text) {
    constexpr const char* kSpaces = " \t\f\v";
    const size_t first = text.find_first_not_of(kSpaces);
    return first == std::string_view::npos ? std::string_view()
                                           : text.substr(first, text.find_last_not_of(kSpaces) - first + 1);
}

} // namespace subtitles
