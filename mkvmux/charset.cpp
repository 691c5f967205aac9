#include "mkvmux/charset.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "win/platform.h"

namespace mkvmux {

namespace {

struct Name {
    std::string_view name;
    unsigned codePage;
};
constexpr Name kNames[] = {
    {"utf-8", CP_UTF8}, {"utf8", CP_UTF8},  {"us-ascii", 20127}, {"ascii", 20127},  {"koi8-r", 20866},
    {"koi8-u", 21866},  {"shift_jis", 932}, {"sjis", 932},       {"euc-jp", 20932}, {"euc-kr", 949},
    {"gbk", 936},       {"gb2312", 936},    {"gb18030", 54936},  {"big5", 950},     {"macintosh", 10000},
};
// What the number of the code page follows, or begins at.
constexpr Name kPrefixes[] = {{"windows-", 0}, {"cp", 0}, {"ibm", 0}, {"iso-8859-", 28590}, {"iso8859-", 28590}};

std::optional<unsigned> Numbered(std::string_view name) {
    for (const Name& prefix : kPrefixes) {
        if (!name.starts_with(prefix.name)) {
            continue;
        }
        const std::string_view digits = name.substr(prefix.name.size());
        constexpr unsigned kMost = 65000;
        unsigned number = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (error == std::errc() && end == digits.data() + digits.size() && number > 0 && number < kMost) {
            return prefix.codePage + number;
        }
    }
    return {};
}

} // namespace

std::optional<unsigned> CodePageOf(std::string_view name) {
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    const auto* const known =
        std::find_if(std::begin(kNames), std::end(kNames), [&lower](const Name& row) { return row.name == lower; });
    const std::optional<unsigned> codePage =
        known != std::end(kNames) ? std::optional(known->codePage) : Numbered(lower);
    return codePage && IsValidCodePage(*codePage) != FALSE ? codePage : std::nullopt;
}

} // namespace mkvmux
