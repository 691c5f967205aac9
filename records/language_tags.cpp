#include "records/language_tags.h"

#include <algorithm>
#include <string_view>

#include "records/language_lookup.h"
#include "records/language_table.h"

namespace records {

namespace {

constexpr size_t kLongCodeLength = 3;
constexpr size_t kMaxPartLength = 8;
constexpr size_t kMinLanguageLength = 2;

bool IsLetter(char c) {
    return c >= 'a' && c <= 'z';
}

bool IsLetterOrDigit(char c) {
    return IsLetter(c) || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// Empty for what is not ASCII.
std::string AsciiOf(const WideString& text) {
    const auto isAscii = [](WCHAR unit) { return unit < 0x80; };
    return std::all_of(text.begin(), text.end(), isAscii) ? std::string(text.begin(), text.end()) : std::string();
}

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return lower;
}

bool IsLanguagePart(std::string_view part) {
    return part.size() >= kMinLanguageLength && part.size() <= kMaxPartLength &&
           std::all_of(part.begin(), part.end(), IsLetter);
}

// Each behind its hyphen.
bool AreFurtherParts(std::string_view rest) {
    while (!rest.empty()) {
        rest.remove_prefix(1);
        const std::string_view part = rest.substr(0, rest.find('-'));
        if (part.empty() || part.size() > kMaxPartLength || !std::all_of(part.begin(), part.end(), IsLetterOrDigit)) {
            return false;
        }
        rest.remove_prefix(part.size());
    }
    return true;
}

// Of a pair such as "chi/zho" either; a range for local use has none.
bool HasCode(const LanguageRow& row, std::string_view code) {
    const std::string_view codes = row.code;
    return code == row.twoLetterCode ||
           (code.size() == kLongCodeLength && codes.find('-') == std::string_view::npos &&
            (codes.substr(0, kLongCodeLength) == code || (codes.size() > kLongCodeLength && codes.ends_with(code))));
}

LanguageCodes CodesOfPart(const std::string& language) {
    for (const LanguageRow& row : LanguageRows()) {
        if (HasCode(row, language)) {
            // Of rows with one name, the first has the bibliographic code.
            const LanguageRow& first = LanguageRows()[languageIndexByName(row.name)];
            const std::string code(first.code, kLongCodeLength);
            return {code, *first.twoLetterCode != 0 ? first.twoLetterCode : code};
        }
    }
    return {"und", language};
}

} // namespace

std::optional<LanguageCodes> FindLanguageCodes(const WideString& text) {
    if (text.empty() || FindLanguage(text.c_str()) != kNoLanguageIndex) {
        return LanguageCodesOf(text.c_str());
    }
    const std::string tag = AsciiOf(text);
    const std::string language = Lower(tag.substr(0, tag.find('-')));
    const std::string rest = tag.substr(std::min(tag.size(), language.size()));
    if (!IsLanguagePart(language) || !AreFurtherParts(rest)) {
        return {};
    }
    LanguageCodes codes = CodesOfPart(language);
    codes.tag += rest;
    return codes;
}

} // namespace records
