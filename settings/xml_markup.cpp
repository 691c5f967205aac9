#include "settings/xml_markup.h"

#include "settings/lexical.h"

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

bool IsClosingTag(std::wstring_view markup) {
    return markup.starts_with(L"</");
}

std::vector<std::wstring_view> AttributeNames(std::wstring_view tag) {
    std::vector<std::wstring_view> names;
    wchar_t quote = 0;
    std::size_t name = 0; // where the last one begins
    for (std::size_t i = 0; i < tag.size(); ++i) {
        if (quote != 0) {
            quote = tag[i] == quote ? wchar_t{0} : quote;
        } else if (tag[i] == L'"' || tag[i] == L'\'') {
            quote = tag[i];
        } else if (tag[i] == L'=') {
            names.push_back(tag.substr(name, i - name));
        } else if (IsXmlSpace(tag[i])) {
            name = i + 1;
        }
    }
    return names;
}
