#include "settings/xml_layout.h"

#include <algorithm>

#include "settings/lexical.h"

namespace {

constexpr std::wstring_view kDeclaration = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

// Where the tag, comment, section or instruction that begins the text ends.
std::size_t MarkupLength(std::wstring_view text) {
    const auto lengthUpTo = [text](std::wstring_view end, std::size_t from) {
        const std::size_t found = text.find(end, from);
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
    wchar_t quote = 0;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (quote != 0) {
            quote = text[i] == quote ? wchar_t{0} : quote;
        } else if (text[i] == L'"' || text[i] == L'\'') {
            quote = text[i];
        } else if (text[i] == L'>') {
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

bool IsSpace(std::wstring_view text) {
    return std::all_of(text.begin(), text.end(), IsXmlSpace);
}

// What stands between two pieces of markup, in the layout of the file.
std::wstring_view Between(std::wstring_view before, std::wstring_view text, std::wstring_view after) {
    if (after.empty()) {
        return {}; // behind the last tag
    }
    const bool wholeContent = IsOpeningTag(before) && after.starts_with(L"</") && !text.empty();
    const bool keeps = wholeContent || IsCharacterData(before) || IsCharacterData(after) || !IsSpace(text);
    return keeps ? text : std::wstring_view(L"\n");
}

} // namespace

std::wstring OneTagPerLine(std::wstring_view xml) {
    std::wstring result(kDeclaration);
    result.reserve(xml.size() + kDeclaration.size());
    std::wstring_view before = kDeclaration;
    if (xml.starts_with(L"<?xml ")) {
        xml.remove_prefix(MarkupLength(xml));
    }
    while (!xml.empty()) {
        const std::size_t textLength = std::min(xml.find(L'<'), xml.size());
        const std::wstring_view text = xml.substr(0, textLength);
        xml.remove_prefix(textLength);
        const std::wstring_view markup = xml.substr(0, MarkupLength(xml));
        xml.remove_prefix(markup.size());
        result += Between(before, text, markup);
        result += markup;
        before = markup;
    }
    return result;
}
