#include "settings/xml_names.h"

#include <algorithm>
#include <span>

namespace {

// A parser gives up on documents that are nested much deeper than this.
constexpr size_t kMaxDepth = 100;
// As long as the name of a registry key may be.
constexpr size_t kMaxNameChars = 255;

struct CharRange {
    wchar_t first;
    wchar_t last;
};

// Extensible Markup Language 1.0, Names, without the colon (it separates a namespace's prefix) and within the basic
// plane.
constexpr CharRange kNameStart[] = {
    {L'A', L'Z'},     {L'_', L'_'},     {L'a', L'z'},     {0x00C0, 0x00D6}, {0x00D8, 0x00F6},
    {0x00F8, 0x02FF}, {0x0370, 0x037D}, {0x037F, 0x1FFF}, {0x200C, 0x200D}, {0x2070, 0x218F},
    {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD},
};
constexpr CharRange kNameOther[] = {
    {L'-', L'.'}, {L'0', L'9'}, {0x00B7, 0x00B7}, {0x0300, 0x036F}, {0x203F, 0x2040},
};

bool IsIn(std::span<const CharRange> ranges, wchar_t c) {
    return std::any_of(ranges.begin(), ranges.end(),
                       [c](const CharRange& range) { return c >= range.first && c <= range.last; });
}

bool IsElementName(const std::wstring& name) {
    return !name.empty() && name.size() <= kMaxNameChars && IsIn(kNameStart, name.front()) &&
           std::all_of(name.begin(), name.end(), [](wchar_t c) { return IsIn(kNameStart, c) || IsIn(kNameOther, c); });
}

bool IsElementPath(std::wstring_view path) {
    const auto names = ElementNames(path);
    return names.size() <= kMaxDepth && std::all_of(names.begin(), names.end(), IsElementName);
}

} // namespace

std::optional<std::wstring> EffectiveSectionPath(std::wstring_view prefix, const std::wstring& section) {
    std::wstring path = section;
    std::replace(path.begin(), path.end(), L'\\', L'/');
    std::replace(path.begin(), path.end(), L' ', L'_');
    if (!path.starts_with(L'/')) {
        path.insert(0, 1, L'/');
    }
    path.insert(0, prefix);
    if (path.ends_with(L'/')) {
        path.pop_back();
    }
    return IsElementPath(path) ? std::optional(path) : std::nullopt;
}

std::optional<std::wstring> ValuePath(const std::wstring& sectionPath, const std::wstring& key) {
    std::wstring path = key;
    std::replace(path.begin(), path.end(), L' ', L'_');
    if (!path.starts_with(L'/')) {
        path.insert(0, 1, L'/');
    }
    path.insert(0, sectionPath);
    return IsElementPath(path) ? std::optional(path) : std::nullopt;
}

std::vector<std::wstring> ElementNames(std::wstring_view path) {
    std::vector<std::wstring> names;
    while (!path.empty()) {
        path.remove_prefix(1); // the '/'
        const size_t end = std::min(path.find(L'/'), path.size());
        names.emplace_back(path.substr(0, end));
        path.remove_prefix(end);
    }
    return names;
}
