#include <algorithm>

#include "tools/text_source/subtitle_file.h"
#include "tools/text_source/text_decoder.h"

namespace subtitles {

namespace {

constexpr REFERENCE_TIME kSecond = 10'000'000; // in units of 100 ns
constexpr size_t kMaxDigits = 6;
constexpr size_t kFractionDigits = 7;

// Takes digits off the front.
std::optional<REFERENCE_TIME> TakeNumber(std::string& text) {
    const size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    if (digits == 0 || digits > kMaxDigits) {
        return {};
    }
    const REFERENCE_TIME number = std::stol(text.substr(0, digits));
    text.erase(0, digits);
    return number;
}

bool TakeAny(std::string& text, const char* characters) {
    if (text.find_first_of(characters) != 0) {
        return false;
    }
    text.erase(0, 1);
    return true;
}

// Digits behind the separator; nothing is 0.
std::optional<REFERENCE_TIME> TakeFraction(std::string& text) {
    if (!TakeAny(text, ",.:")) {
        return 0;
    }
    std::string digits = text.substr(0, std::min(text.find_first_not_of("0123456789"), text.size()));
    text.erase(0, digits.size());
    if (digits.empty()) {
        return {};
    }
    digits.resize(kFractionDigits, '0');
    return std::stol(digits);
}

} // namespace

std::optional<REFERENCE_TIME> ParseTime(const std::string& text) {
    std::string rest = Trimmed(text);
    const bool isNegative = TakeAny(rest, "-");
    const auto hours = TakeNumber(rest);
    if (!hours || !TakeAny(rest, ":")) {
        return {};
    }
    const auto minutes = TakeNumber(rest);
    if (!minutes || !TakeAny(rest, ":")) {
        return {};
    }
    const auto seconds = TakeNumber(rest);
    const auto fraction = seconds ? TakeFraction(rest) : std::nullopt;
    if (!fraction || !rest.empty()) {
        return {};
    }
    const REFERENCE_TIME time = ((*hours * 60 + *minutes) * 60 + *seconds) * kSecond + *fraction;
    return isNegative ? -time : time;
}

void SortByStart(std::vector<SubtitleEvent>& events) {
    std::stable_sort(events.begin(), events.end(),
                     [](const SubtitleEvent& a, const SubtitleEvent& b) { return a.start < b.start; });
}

} // namespace subtitles
