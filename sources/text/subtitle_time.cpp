#include "sources/text/subtitle_time.h"

#include <algorithm>

#include "dshow/ref_time.h"
#include "sources/text/text_decoder.h"

namespace subtitles {

namespace {

constexpr size_t kMaxDigits = 6;
constexpr size_t kFractionDigits = 7;

// Takes the digits off the front.
std::string_view TakeDigits(std::string_view& text) {
    const std::string_view digits = text.substr(0, std::min(text.find_first_not_of("0123456789"), text.size()));
    text.remove_prefix(digits.size());
    return digits;
}

REFERENCE_TIME ValueOf(std::string_view digits) {
    REFERENCE_TIME value = 0;
    for (const char digit : digits) {
        value = 10 * value + (digit - '0');
    }
    return value;
}

std::optional<REFERENCE_TIME> TakeNumber(std::string_view& text) {
    const std::string_view digits = TakeDigits(text);
    return digits.empty() || digits.size() > kMaxDigits ? std::nullopt : std::optional(ValueOf(digits));
}

bool TakeAny(std::string_view& text, const char* characters) {
    if (text.find_first_of(characters) != 0) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

// Digits behind the separator; nothing is 0.
std::optional<REFERENCE_TIME> TakeFraction(std::string_view& text) {
    if (!TakeAny(text, ",.:")) {
        return 0;
    }
    const std::string_view digits = TakeDigits(text).substr(0, kFractionDigits);
    if (digits.empty()) {
        return {};
    }
    REFERENCE_TIME fraction = ValueOf(digits);
    for (size_t i = digits.size(); i < kFractionDigits; ++i) {
        fraction *= 10;
    }
    return fraction;
}

} // namespace

std::optional<REFERENCE_TIME> ParseTime(std::string_view text) {
    std::string_view rest = Trimmed(text);
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
    const REFERENCE_TIME time = ((*hours * 60 + *minutes) * 60 + *seconds) * kReferenceTimesPerSecond + *fraction;
    return isNegative ? -time : time;
}

} // namespace subtitles
