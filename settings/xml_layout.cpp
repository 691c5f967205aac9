#include "settings/xml_layout.h"

#include <algorithm>

#include "settings/lexical.h"
#include "settings/xml_markup.h"

namespace {

constexpr std::wstring_view kDeclaration = L"<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

bool IsSpace(std::wstring_view text) {
    return std::all_of(text.begin(), text.end(), IsXmlSpace);
}

// What stands between two pieces of markup, in the layout of the file.
std::wstring_view Between(std::wstring_view before, std::wstring_view text, std::wstring_view after) {
    if (after.empty()) {
        return {}; // behind the last tag
    }
    const bool wholeContent = IsOpeningTag(before) && IsClosingTag(after) && !text.empty();
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
        const size_t textLength = std::min(xml.find(L'<'), xml.size());
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
