#include "settings/xml_markup.h"

#include "settings/lexical.h"

namespace {

// Follows the quoted values of a tag, character by character.
class QuoteTracker {
  public:
    // Whether the next character belongs to a value, the quotes included.
    [[nodiscard]] bool IsQuoted(wchar_t next) {
        const bool wasOpen = m_open != 0;
        if (wasOpen ? next == m_open : next == L'"' || next == L'\'') {
            m_open = wasOpen ? wchar_t{0} : next;
            return true;
        }
        return wasOpen;
    }

  private:
    wchar_t m_open = 0; // the quote that ends it
};

} // namespace

size_t MarkupLength(std::wstring_view text) {
    const auto lengthUpTo = [text](std::wstring_view end, size_t from) {
        const size_t found = text.find(end, from);
        return found == std::wstring_view::npos ? text.size() : found + end.size();
    };
    if (text.starts_with(L"<!--")) {
        return lengthUpTo(L"-->", 4);
    }
    if (text.starts_with(L"<![CDATA[")) {
        return lengthUpTo(L"]]>", 9);
    }
    if (text.starts_with(L"<?")) {
        return lengthUpTo(L"?>", 2);
    }
    QuoteTracker quotes;
    for (size_t i = 1; i < text.size(); ++i) {
        if (!quotes.IsQuoted(text[i]) && text[i] == L'>') {
            return i + 1;
        }
    }
    return text.size();
}

bool IsCharacterData(std::wstring_view markup) {
    return markup.starts_with(L"<![CDATA[");
}

bool IsOpeningTag(std::wstring_view markup) {
    return markup.starts_with(L'<') && !markup.starts_with(L"<!") && !markup.starts_with(L"<?") &&
           !markup.starts_with(L"</") && !markup.ends_with(L"/>");
}

bool IsClosingTag(std::wstring_view markup) {
    return markup.starts_with(L"</");
}

std::vector<std::wstring_view> AttributeNames(std::wstring_view tag) {
    std::vector<std::wstring_view> names;
    QuoteTracker quotes;
    size_t name = 0; // where the last one begins
    for (size_t i = 0; i < tag.size(); ++i) {
        if (quotes.IsQuoted(tag[i])) {
            continue;
        }
        if (tag[i] == L'=') {
            names.push_back(tag.substr(name, i - name));
        } else if (IsXmlSpace(tag[i])) {
            name = i + 1;
        }
    }
    return names;
}
