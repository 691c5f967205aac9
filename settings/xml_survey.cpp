#include "settings/xml_survey.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "settings/xml_markup.h"

using namespace std::string_view_literals;

namespace {

constexpr wchar_t kNotAscii = 0xFFFD;

struct CharacterBytes {
    size_t count = 1;
    size_t lowest = 0; // the place of the byte that an ASCII character is in
};

// From the byte order mark, or from the '<' that a document begins with.
CharacterBytes CharacterBytesOf(std::string_view bytes) {
    if (bytes.starts_with("\xFF\xFE\0\0"sv) || bytes.starts_with("<\0\0\0"sv)) {
        return {4, 0};
    }
    if (bytes.starts_with("\0\0\xFE\xFF"sv) || bytes.starts_with("\0\0\0<"sv)) {
        return {4, 3};
    }
    if (bytes.starts_with("\xFF\xFE"sv) || bytes.starts_with("<\0"sv)) {
        return {2, 0};
    }
    if (bytes.starts_with("\xFE\xFF"sv) || bytes.starts_with("\0<"sv)) {
        return {2, 1};
    }
    return {};
}

// All that is not ASCII is one character: no markup is made of it.
std::wstring AsciiOf(std::string_view bytes, const CharacterBytes& character) {
    std::wstring text;
    text.reserve(bytes.size() / character.count);
    for (; bytes.size() >= character.count; bytes.remove_prefix(character.count)) {
        const auto lowest = static_cast<unsigned char>(bytes[character.lowest]);
        const std::string_view all = bytes.substr(0, character.count);
        const auto others = std::count_if(all.begin(), all.end(), [](char c) { return c != '\0'; });
        const bool ascii = lowest > 0 && lowest < 0x80 && others == 1;
        text += ascii ? static_cast<wchar_t>(lowest) : kNotAscii;
    }
    return text;
}

// The encodings that leave ASCII's bytes to ASCII, or to the second half of a character where markup has none of them.
constexpr std::wstring_view kNarrowEncodings[] = {L"utf-8", L"us-ascii", L"iso-8859-", L"windows-", L"shift_jis",
                                                  L"euc-",  L"gb",       L"big5",      L"koi8-"};
constexpr std::wstring_view kWideEncodings[] = {L"utf-16"};

bool IsPlainDeclaration(std::wstring_view declaration, std::span<const std::wstring_view> encodings) {
    std::wstring text(declaration);
    std::transform(text.begin(), text.end(), text.begin(),
                   [](wchar_t c) { return c >= L'A' && c <= L'Z' ? static_cast<wchar_t>(c - L'A' + L'a') : c; });
    const size_t name = text.find(L"encoding");
    const size_t quote = name == std::wstring::npos ? name : text.find_first_of(L"\"'", name);
    if (quote == std::wstring::npos) {
        return true;
    }
    return std::any_of(encodings.begin(), encodings.end(), [&](std::wstring_view encoding) {
        return text.compare(quote + 1, encoding.size(), encoding) == 0;
    });
}

// Each value that the settings write brings these: they count only where there are more of them.
constexpr std::wstring_view kValueAttributes[] = {L"xmlns:dt", L"dt:dt", L"xml:space"};

size_t CountAttributes(std::wstring_view tag) {
    const auto names = AttributeNames(tag);
    const auto ours = std::count_if(names.begin(), names.end(), [](std::wstring_view name) {
        return std::find(std::begin(kValueAttributes), std::end(kValueAttributes), name) != std::end(kValueAttributes);
    });
    return names.size() - std::min(static_cast<size_t>(ours), std::size(kValueAttributes));
}

// The elements that a place in a document is within, as far as their attributes go.
class OpenElements {
  public:
    void Take(std::wstring_view markup) {
        const bool opens = IsOpeningTag(markup);
        if (IsClosingTag(markup) && !m_counts.empty()) {
            m_attributes -= m_counts.back();
            m_counts.pop_back();
        }
        m_own = markup.starts_with(L"<!") || markup.starts_with(L"<?") ? 0 : CountAttributes(markup);
        if (opens) {
            m_counts.push_back(m_own);
            m_attributes += std::exchange(m_own, 0);
        }
    }
    // Those of the tag that was taken last included.
    [[nodiscard]] size_t Attributes() const { return m_attributes + m_own; }

  private:
    std::vector<size_t> m_counts;
    size_t m_attributes = 0;
    size_t m_own = 0; // of an empty element
};

} // namespace

bool IsHarmless(const std::string& bytes) {
    const CharacterBytes character = CharacterBytesOf(bytes);
    const std::span<const std::wstring_view> encodings =
        character.count == 1 ? std::span<const std::wstring_view>(kNarrowEncodings) : kWideEncodings;
    const std::wstring ascii = AsciiOf(bytes, character);
    std::wstring_view rest = ascii;
    OpenElements open;
    size_t count = 0;
    for (size_t next = rest.find(L'<'); next != std::wstring_view::npos; next = rest.find(L'<')) {
        rest.remove_prefix(next);
        const std::wstring_view markup = rest.substr(0, MarkupLength(rest));
        rest.remove_prefix(markup.size());
        open.Take(markup);
        if (++count > kMaxMarkup || open.Attributes() > kMaxAttributes || markup.starts_with(L"<!DOCTYPE") ||
            (markup.starts_with(L"<?xml ") && !IsPlainDeclaration(markup, encodings))) {
            return false;
        }
    }
    return true;
}
