#include "mkvmux/language_choice.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "mkvmux/language_spelling.h"
#include "mkvmux/text.h"
#include "records/language_table.h"
#include "win/code_page_text.h"

namespace mkvmux {

namespace {

constexpr size_t kMaxSuggestions = 3;

std::wstring Widen(std::string_view text) {
    return win::WideFromNarrow(kListCodePage, text);
}

std::wstring Lower(std::wstring_view text) {
    std::wstring lower(text);
    CharLowerBuffW(lower.data(), static_cast<DWORD>(lower.size()));
    return lower;
}

// "chi/zho" has two codes of three letters.
bool HasCode(const records::LanguageRow& row, std::wstring_view code) {
    constexpr size_t kCodeChars = 3;
    const std::wstring codes = Widen(row.code);
    return code == Widen(row.twoLetterCode) ||
           (code.size() == kCodeChars && (codes.starts_with(code) || codes.ends_with(code)));
}

template <typename Matches>
std::optional<std::wstring> FirstRow(Matches matches) {
    const std::span<const records::LanguageRow> rows = records::LanguageRows();
    const auto row = std::find_if(rows.begin(), rows.end(), matches);
    return row == rows.end() ? std::nullopt : std::optional(Widen(row->name));
}

// How many characters must be put in, left out or replaced.
size_t EditDistance(std::wstring_view from, std::wstring_view to) {
    std::vector<size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < from.size(); ++i) {
        size_t diagonal = std::exchange(row[0], i + 1);
        for (size_t j = 0; j < to.size(); ++j) {
            const size_t replaced = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

// 0 for a name one of whose words begins with the text ("Greek" means two languages), else the edit distance.
size_t Distance(std::wstring_view text, std::wstring_view name) {
    for (size_t word = 0; word != std::wstring_view::npos; word = name.find(L' ', word + 1)) {
        const std::wstring_view rest = name.substr(word == 0 ? 0 : word + 1);
        if (!text.empty() && rest.starts_with(text)) {
            return 0;
        }
    }
    return EditDistance(text, name);
}

} // namespace

std::optional<std::wstring> FindLanguage(std::wstring_view text) {
    if (text.empty()) {
        return {};
    }
    // A name as it stands comes first: "Ga" is a language, "ga" the code of another one.
    if (auto exact = FirstRow([&](const records::LanguageRow& row) { return Widen(row.name) == text; })) {
        return exact;
    }
    const std::wstring lower = Lower(text);
    if (auto byCode = FirstRow([&](const records::LanguageRow& row) { return HasCode(row, lower); })) {
        return byCode;
    }
    return FirstRow([&](const records::LanguageRow& row) { return Lower(Widen(row.name)) == lower; });
}

std::vector<std::wstring> NearestLanguages(std::wstring_view text) {
    constexpr size_t kCharsPerMistake = 3;
    constexpr size_t kMaxMistakes = 4;
    const size_t tolerance = std::clamp(text.size() / kCharsPerMistake, size_t{1}, kMaxMistakes);
    const std::wstring lower = Lower(text.substr(0, MAX_PATH));
    std::vector<std::pair<size_t, std::wstring>> found;
    for (const records::LanguageRow& row : records::LanguageRows()) {
        std::wstring name = Widen(row.name);
        const bool isListed = !found.empty() && found.back().second == name; // a name can have several rows
        if (const size_t distance = Distance(lower, Lower(name)); distance <= tolerance && !isListed) {
            found.emplace_back(distance, std::move(name));
        }
    }
    std::stable_sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    found.resize(std::min(found.size(), kMaxSuggestions));
    std::vector<std::wstring> names;
    names.reserve(found.size());
    for (auto& [distance, name] : found) {
        names.push_back(std::move(name));
    }
    return names;
}

std::string ListLanguages() {
    constexpr size_t kCodeColumnChars = 9;
    std::string list;
    for (const records::LanguageRow& row : records::LanguageRows()) {
        std::string code = row.code;
        code.resize(std::max(code.size(), kCodeColumnChars), ' ');
        list += code + Utf8FromWide(Widen(row.name)) + "\n";
    }
    return list;
}

} // namespace mkvmux
